#pragma once

#include <gtest/gtest.h>

#include <concepts>
#include <cstdint>
#include <memory>
#include <vector>

#include "capture/HotKeys.h"
#include "capture/contract/Heard.h"

// What all hot keys keep to. Instantiate the suite in this namespace, with a rig:
//   INSTANTIATE_TYPED_TEST_SUITE_P(X11, HotKeysContract, X11HotKeysRig);
namespace vesk::capture::contract {

enum class Lock : std::uint8_t { capsLock, numLock, scrollLock };

/// Hot keys, a user at their keyboard and another application. One is made for each test; it throws
/// when it cannot be set up.
template <typename Rig>
concept HotKeysRig =
    std::default_initializable<Rig> && requires(Rig rig, Shortcut shortcut, Lock lock) {
      { rig.hotKeys() } -> std::convertible_to<HotKeys&>;
      rig.press(shortcut);   ///< the keys and lets them go
      rig.toggle(lock);      ///< all are off at first
      rig.occupy(shortcut);  ///< another application holds it when this returns
    };

template <HotKeysRig Rig>
class HotKeysContract : public ::testing::Test {
 protected:
  static constexpr Shortcut option1 = defaultZoomIn;
  static constexpr Shortcut option2 = defaultZoomOut;
  static constexpr Shortcut controlShiftA{.keyCode = 0,
                                          .modifierFlags = controlModifier | shiftModifier};
  using IDs = std::vector<HotKeys::ID>;

  Rig rig_;
  Heard<HotKeys::ID> pressed_;
};
TYPED_TEST_SUITE_P(HotKeysContract);

TYPED_TEST_P(HotKeysContract, aHeldCombinationTellsItsNumberAtEachPress) {
  auto& rig = this->rig_;
  const auto listening = rig.hotKeys().listen(this->pressed_.adder());
  ASSERT_TRUE(rig.hotKeys().hold(1, this->option1));
  ASSERT_TRUE(rig.hotKeys().hold(2, this->option2));
  ASSERT_TRUE(rig.hotKeys().hold(7, this->controlShiftA));
  rig.press(this->option1);
  rig.press(this->option2);
  rig.press(this->option1);
  rig.press(this->controlShiftA);
  ASSERT_TRUE(this->pressed_.comesTo(4));
  EXPECT_EQ(this->pressed_.all(), (typename TestFixture::IDs{1, 2, 1, 7}));
}

TYPED_TEST_P(HotKeysContract, otherModifiersMakeAnotherCombination) {
  auto& rig = this->rig_;
  const auto listening = rig.hotKeys().listen(this->pressed_.adder());
  ASSERT_TRUE(rig.hotKeys().hold(1, this->option1));
  ASSERT_TRUE(rig.hotKeys().hold(2, this->option2));
  auto withShift = this->option1;
  withShift.modifierFlags |= shiftModifier;
  rig.press(withShift);
  rig.press(this->option2);
  ASSERT_TRUE(this->pressed_.comesTo(1));
  EXPECT_EQ(this->pressed_.all(), (typename TestFixture::IDs{2}));
}

TYPED_TEST_P(HotKeysContract, locksMakeNoDifference) {
  auto& rig = this->rig_;
  const auto listening = rig.hotKeys().listen(this->pressed_.adder());
  ASSERT_TRUE(rig.hotKeys().hold(1, this->option1));
  std::size_t presses = 0;
  // In the end all three are on, on the way each combination of the first two has been.
  for (const auto lock :
       {Lock::capsLock, Lock::numLock, Lock::capsLock, Lock::scrollLock, Lock::capsLock}) {
    rig.toggle(lock);
    rig.press(this->option1);
    EXPECT_TRUE(this->pressed_.comesTo(++presses)) << presses;
  }
  rig.toggle(Lock::capsLock);
  rig.toggle(Lock::numLock);
  rig.toggle(Lock::scrollLock);
}

TYPED_TEST_P(HotKeysContract, aCombinationThatAnotherApplicationHoldsIsRefused) {
  auto& rig = this->rig_;
  const auto listening = rig.hotKeys().listen(this->pressed_.adder());
  rig.occupy(this->option1);
  EXPECT_FALSE(rig.hotKeys().hold(1, this->option1));
  ASSERT_TRUE(rig.hotKeys().hold(2, this->option2));
  rig.press(this->option1);
  rig.press(this->option2);
  ASSERT_TRUE(this->pressed_.comesTo(1));
  EXPECT_EQ(this->pressed_.all(), (typename TestFixture::IDs{2}));
}

TYPED_TEST_P(HotKeysContract, aCombinationThatIsHeldAlreadyIsRefusedAndStaysHeld) {
  auto& rig = this->rig_;
  const auto listening = rig.hotKeys().listen(this->pressed_.adder());
  ASSERT_TRUE(rig.hotKeys().hold(1, this->option1));
  EXPECT_FALSE(rig.hotKeys().hold(2, this->option1));
  rig.press(this->option1);
  ASSERT_TRUE(this->pressed_.comesTo(1));
  EXPECT_EQ(this->pressed_.all(), (typename TestFixture::IDs{1}));
}

TYPED_TEST_P(HotKeysContract, aKeyThatNoKeyboardHasIsRefused) {
  EXPECT_FALSE(this->rig_.hotKeys().hold(1, {.keyCode = 0xFFFE, .modifierFlags = optionModifier}));
}

TYPED_TEST_P(HotKeysContract, releasedCombinationsAreSilentAndCanBeHeldAgain) {
  auto& rig = this->rig_;
  const auto listening = rig.hotKeys().listen(this->pressed_.adder());
  ASSERT_TRUE(rig.hotKeys().hold(1, this->option1));
  ASSERT_TRUE(rig.hotKeys().hold(2, this->option2));
  rig.hotKeys().releaseAll();
  rig.press(this->option1);
  ASSERT_TRUE(rig.hotKeys().hold(5, this->option2));
  rig.press(this->option2);
  ASSERT_TRUE(this->pressed_.comesTo(1));
  EXPECT_EQ(this->pressed_.all(), (typename TestFixture::IDs{5}));
}

TYPED_TEST_P(HotKeysContract, whoHasEndedListeningHearsNothing) {
  auto& rig = this->rig_;
  Heard<HotKeys::ID> others;
  const auto other = rig.hotKeys().listen(others.adder());
  auto listening = rig.hotKeys().listen(this->pressed_.adder());
  ASSERT_TRUE(rig.hotKeys().hold(1, this->option1));
  rig.press(this->option1);
  ASSERT_TRUE(this->pressed_.comesTo(1));
  listening.reset();
  rig.press(this->option1);
  ASSERT_TRUE(others.comesTo(2));
  EXPECT_EQ(this->pressed_.count(), 1U);
}

REGISTER_TYPED_TEST_SUITE_P(HotKeysContract, aHeldCombinationTellsItsNumberAtEachPress,
                            otherModifiersMakeAnotherCombination, locksMakeNoDifference,
                            aCombinationThatAnotherApplicationHoldsIsRefused,
                            aCombinationThatIsHeldAlreadyIsRefusedAndStaysHeld,
                            aKeyThatNoKeyboardHasIsRefused,
                            releasedCombinationsAreSilentAndCanBeHeldAgain,
                            whoHasEndedListeningHearsNothing);

}  // namespace vesk::capture::contract
