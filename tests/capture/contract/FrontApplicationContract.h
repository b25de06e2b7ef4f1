#pragma once

#include <gtest/gtest.h>

#include <concepts>
#include <memory>
#include <string>

#include "capture/FrontApplication.h"
#include "capture/contract/Heard.h"

// What every front application keeps to. Instantiate the suite in this namespace, with a rig:
//   INSTANTIATE_TYPED_TEST_SUITE_P(X11, FrontApplicationContract, X11FrontRig);
namespace vesk::capture::contract {

/// A desktop with two applications, 0 and 1, of different names, and a user who changes between
/// them. One is made for each test; it throws when it cannot be set up. An action may return before
/// it has taken effect.
template <typename Rig>
concept FrontApplicationRig = std::default_initializable<Rig> && requires(Rig rig, int index) {
  { rig.frontApplication() } -> std::convertible_to<FrontApplication&>;
  { rig.nameOf(index) } -> std::convertible_to<std::string>;
  rig.activate(index);
};

template <FrontApplicationRig Rig>
class FrontApplicationContract : public ::testing::Test {
 protected:
  [[nodiscard]] bool comesToFront(int index) {
    return comesTrue([&] { return rig_.frontApplication().name() == rig_.nameOf(index); });
  }
  static auto is(const std::string& name) {
    return [name](const FrontApplication::Name& heard) { return heard == name; };
  }

  Rig rig_;
  Heard<FrontApplication::Name> heard_;
};
TYPED_TEST_SUITE_P(FrontApplicationContract);

TYPED_TEST_P(FrontApplicationContract, theNameIsThatOfTheApplicationInFront) {
  for (const int index : {0, 1, 0}) {
    this->rig_.activate(index);
    EXPECT_TRUE(this->comesToFront(index));
  }
}

TYPED_TEST_P(FrontApplicationContract, eachChangeIsTold) {
  auto& rig = this->rig_;
  rig.activate(0);
  ASSERT_TRUE(this->comesToFront(0));
  const auto listening = rig.frontApplication().listen(this->heard_.adder());
  ASSERT_TRUE(listening.has_value()) << listening.error().message;
  for (const int index : {1, 0, 1}) {
    const auto before = this->heard_.count();
    rig.activate(index);
    EXPECT_TRUE(this->heard_.has(this->is(rig.nameOf(index)), before));
  }
}

TYPED_TEST_P(FrontApplicationContract, whoHasEndedListeningHearsNothing) {
  auto& rig = this->rig_;
  rig.activate(0);
  ASSERT_TRUE(this->comesToFront(0));
  Heard<FrontApplication::Name> others;
  const auto other = rig.frontApplication().listen(others.adder());
  auto listening = rig.frontApplication().listen(this->heard_.adder());
  ASSERT_TRUE(other && listening);
  rig.activate(1);
  ASSERT_TRUE(this->heard_.has(this->is(rig.nameOf(1))));
  listening->reset();
  const auto count = this->heard_.count();
  rig.activate(0);
  ASSERT_TRUE(others.has(this->is(rig.nameOf(0))));
  EXPECT_EQ(this->heard_.count(), count);
}

REGISTER_TYPED_TEST_SUITE_P(FrontApplicationContract, theNameIsThatOfTheApplicationInFront,
                            eachChangeIsTold, whoHasEndedListeningHearsNothing);

}  // namespace vesk::capture::contract
