#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <chrono>
#include <memory>
#include <thread>
#include <vector>

#include "capture/contract/HotKeysContract.h"
#include "capture/x11/TestDisplay.h"
#include "capture/x11/TestUser.h"
#include "capture/x11/X11HotKeys.h"

namespace vesk::capture::x11::test {
namespace {

using contract::Heard;

class X11HotKeysRig {
 public:
  HotKeys& hotKeys() { return *hotKeys_; }
  void press(const Shortcut& shortcut) { user_.type(shortcut.keyCode, shortcut.modifierFlags); }
  void toggle(contract::Lock lock) { user_.typeKey(keyOf(lock)); }
  void occupy(const Shortcut& shortcut) { EXPECT_TRUE(others_->hold(1, shortcut)); }

  TestDisplay& display() { return display_; }
  const TestUser& user() const { return user_; }
  HotKeys& others() { return *others_; }

 private:
  static XKeyCode keyOf(contract::Lock lock) {
    switch (lock) {
      case contract::Lock::capsLock:
        return 66;
      case contract::Lock::numLock:
        return 77;
      default:
        return 78;
    }
  }

  TestDisplay display_;
  TestUser user_{display_.connection()};
  std::unique_ptr<X11HotKeys> hotKeys_ = X11HotKeys::open(display_.name()).value();
  std::unique_ptr<X11HotKeys> others_ = X11HotKeys::open(display_.name()).value();
};

class X11HotKeysTest : public testing::Test {
 protected:
  X11HotKeysRig rig;
  Heard<HotKeys::ID> pressed;
};

TEST_F(X11HotKeysTest, aTakenCombinationFailsWithTheServersNumber) {
  constexpr int badAccess = 10;
  rig.occupy(defaultZoomIn);
  EXPECT_EQ(rig.hotKeys().hold(1, defaultZoomIn), std::unexpected(badAccess));
  EXPECT_TRUE(rig.hotKeys().hold(2, defaultZoomOut));
  EXPECT_EQ(rig.hotKeys().hold(3, defaultZoomOut), std::unexpected(badAccess));
}

TEST_F(X11HotKeysTest, whatIsGivenBackOthersCanHave) {
  ASSERT_TRUE(rig.hotKeys().hold(1, defaultZoomIn));
  EXPECT_FALSE(rig.others().hold(1, defaultZoomIn));
  rig.hotKeys().releaseAll();
  EXPECT_TRUE(rig.others().hold(1, defaultZoomIn));
}

TEST_F(X11HotKeysTest, aCombinationThatIsTakenWithALockOnlyIsNotHeldInPart) {
  const auto& connection = rig.display().connection();
  xcb_grab_key(connection.get(), 0, connection.root(), XCB_MOD_MASK_1 | XCB_MOD_MASK_2, 10,
               XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC);
  rig.display().sync();
  EXPECT_FALSE(rig.hotKeys().hold(1, defaultZoomIn));
  xcb_ungrab_key(connection.get(), 10, connection.root(), XCB_MOD_MASK_1 | XCB_MOD_MASK_2);
  rig.display().sync();
  EXPECT_TRUE(rig.others().hold(1, defaultZoomIn));
}

TEST_F(X11HotKeysTest, aHeldKeyIsOnePress) {
  ASSERT_EQ(rig.display().run({"xset", "r", "rate", "100", "50"}), 0);
  const auto listening = rig.hotKeys().listen(pressed.adder());
  ASSERT_TRUE(rig.hotKeys().hold(1, defaultZoomIn));
  rig.user().pressKey(64);
  rig.user().pressKey(10);
  std::this_thread::sleep_for(std::chrono::milliseconds{400});
  rig.user().releaseKey(10);
  rig.user().typeKey(10);
  rig.user().releaseKey(64);
  ASSERT_TRUE(pressed.comesTo(2));
  EXPECT_EQ(pressed.count(), 2U);
}

TEST_F(X11HotKeysTest, scrollLockMakesNoDifferenceWhereItIsAModifier) {
  ASSERT_EQ(rig.display().run({"xmodmap", "-e", "add mod3 = Scroll_Lock"}), 0);
  const auto listening = rig.hotKeys().listen(pressed.adder());
  ASSERT_TRUE(rig.hotKeys().hold(1, defaultZoomIn));
  rig.user().pressKey(78);
  rig.press(defaultZoomIn);
  rig.user().releaseKey(78);
  EXPECT_TRUE(pressed.comesTo(1));
}

TEST_F(X11HotKeysTest, aModifierThatTheKeyboardLacksIsRefused) {
  ASSERT_EQ(rig.display().run({"xmodmap", "-e", "clear mod4"}), 0);
  EXPECT_FALSE(rig.hotKeys().hold(1, {.keyCode = 18, .modifierFlags = commandModifier}));
  EXPECT_TRUE(rig.hotKeys().hold(1, defaultZoomIn));
}

TEST_F(X11HotKeysTest, aServerThatDiesMakesHoldingFail) {
  const auto listening = rig.hotKeys().listen(pressed.adder());
  ASSERT_TRUE(rig.hotKeys().hold(1, defaultZoomIn));
  rig.display().kill();
  EXPECT_FALSE(rig.hotKeys().hold(2, defaultZoomOut));
  rig.hotKeys().releaseAll();
}

TEST(X11HotKeys, cannotBeOpenedWithoutAServer) {
  EXPECT_FALSE(X11HotKeys::open(":987"));
}

}  // namespace
}  // namespace vesk::capture::x11::test

namespace vesk::capture::contract {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(X11, HotKeysContract, x11::test::X11HotKeysRig);

}  // namespace
}  // namespace vesk::capture::contract
