#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <array>
#include <memory>
#include <string>

#include "capture/contract/FrontApplicationContract.h"
#include "capture/x11/TestApplication.h"
#include "capture/x11/TestDisplay.h"
#include "capture/x11/X11FrontApplication.h"

namespace vesk::capture::x11::test {
namespace {

using contract::comesTrue;
using contract::Heard;

class X11FrontRig {
 public:
  FrontApplication& frontApplication() { return *frontApplication_; }
  std::string nameOf(int index) { return index == 0 ? "Painter" : "Writer"; }
  void activate(int index) {
    const auto at = static_cast<std::size_t>(index);
    applications_.at(at).activate(windows_.at(at));
  }

 private:
  TestDisplay display_{{.hasWindowManager = true}};
  std::array<TestApplication, 2> applications_{TestApplication{display_.name(), "Painter"},
                                               TestApplication{display_.name(), "Writer"}};
  std::array<std::uint32_t, 2> windows_{
      applications_[0].open({.x = 20, .y = 20, .width = 200, .height = 100}, "图"),
      applications_[1].open({.x = 300, .y = 20, .width = 200, .height = 100}, "文")};
  std::unique_ptr<X11FrontApplication> frontApplication_ =
      X11FrontApplication::open(display_.name()).value();
};

/// A screen without a window manager, whose part the test plays.
class X11FrontApplicationTest : public testing::Test {
 protected:
  void setActive(std::uint32_t window) {
    painter.setNumber(display.connection().root(), "_NET_ACTIVE_WINDOW", window);
  }

  TestDisplay display;
  TestApplication painter{display.name(), "Painter"};
  TestApplication writer{display.name(), "Writer"};
  std::uint32_t picture = painter.open({.width = 100, .height = 100}, "图");
  std::uint32_t text = writer.open({.width = 100, .height = 100}, "文");
  Heard<FrontApplication::Name> heard;
};

TEST_F(X11FrontApplicationTest, isKnownFromTheBeginning) {
  setActive(picture);
  EXPECT_EQ(X11FrontApplication::open(display.name()).value()->name(), "Painter");
}

TEST_F(X11FrontApplicationTest, isNobodyWhereNoWindowWasEverActive) {
  EXPECT_EQ(X11FrontApplication::open(display.name()).value()->name(), std::nullopt);
}

TEST_F(X11FrontApplicationTest, momentsWithoutAnActiveWindowAreIgnored) {
  setActive(picture);
  const auto front = X11FrontApplication::open(display.name()).value();
  const auto listening = front->listen(heard.adder()).value();
  setActive(0);
  setActive(text);
  ASSERT_TRUE(heard.comesTo(1));
  EXPECT_EQ(heard.all().front(), "Writer");
  EXPECT_EQ(heard.count(), 1U);
}

TEST_F(X11FrontApplicationTest, aWindowThatHasGoneLeavesNoName) {
  setActive(picture);
  const auto front = X11FrontApplication::open(display.name()).value();
  const auto listening = front->listen(heard.adder()).value();
  setActive(0x1FFFFFFF);
  ASSERT_TRUE(heard.comesTo(1));
  EXPECT_EQ(heard.all().front(), std::nullopt);
  EXPECT_EQ(front->name(), std::nullopt);
}

TEST_F(X11FrontApplicationTest, aServerThatDiesLeavesTheNameAndRefusesListeners) {
  setActive(picture);
  const auto front = X11FrontApplication::open(display.name()).value();
  const auto listening = front->listen(heard.adder()).value();
  display.kill();
  EXPECT_TRUE(comesTrue([&] { return !front->listen(heard.adder()); }));
  EXPECT_EQ(front->name(), "Painter");
}

}  // namespace
}  // namespace vesk::capture::x11::test

namespace vesk::capture::contract {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(X11, FrontApplicationContract, x11::test::X11FrontRig);

}  // namespace
}  // namespace vesk::capture::contract
