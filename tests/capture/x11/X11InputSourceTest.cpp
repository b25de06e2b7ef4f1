#include <gtest/gtest.h>
#include <xcb/xcb.h>

#include <array>
#include <chrono>
#include <string>
#include <thread>
#include <vector>

#include "capture/KeyCombo.h"
#include "capture/contract/InputSourceContract.h"
#include "capture/x11/TestDisplay.h"
#include "capture/x11/TestUser.h"
#include "capture/x11/X11InputSource.h"

namespace vesk::capture::x11::test {
namespace {

using contract::Heard;
using contract::only;

class X11InputRig {
 public:
  InputSource& source() { return *source_; }

  void movePointer(const ScreenPoint& point) {
    // Where a press was is looked up when it is heard, so a hand faster than any is slowed down.
    std::this_thread::sleep_for(std::chrono::milliseconds{30});
    user_.movePointer(point);
  }
  void press(TestUser::Button button) { user_.pressButton(TestUser::numberOf(button)); }
  void release(TestUser::Button button) { user_.releaseButton(TestUser::numberOf(button)); }
  void scrollUp() { user_.clickButton(4); }
  void scrollLeft() { user_.clickButton(6); }
  void type(KeyCode key, ModifierFlags modifiers) { user_.type(key, modifiers); }

  TestDisplay& display() { return display_; }
  const TestUser& user() const { return user_; }

 private:
  TestDisplay display_;
  TestUser user_{display_.connection()};
  std::unique_ptr<X11InputSource> source_ = X11InputSource::open(display_.name()).value();
};

class X11InputSourceTest : public testing::Test {
 protected:
  /// The key combinations that are heard, once there are so many.
  std::vector<std::string> combos(std::size_t count) {
    EXPECT_TRUE(contract::comesTrue([&] { return only<KeyPress>(heard).size() >= count; }));
    std::vector<std::string> combos;
    for (const auto& key : only<KeyPress>(heard)) combos.push_back(keyCombo(key));
    return combos;
  }
  auto listen() { return rig.source().listen(true, heard.adder()).value(); }
  void typeKeys(const std::vector<XKeyCode>& keys) {
    for (const auto key : keys) rig.user().typeKey(key);
  }

  X11InputRig rig;
  Heard<InputEvent> heard;
};

using Combos = std::vector<std::string>;

TEST_F(X11InputSourceTest, keysAreToldInTheWordsOfTheLog) {
  const auto listening = listen();
  rig.type(1, shiftModifier | commandModifier);  // S
  rig.type(36, 0);
  rig.type(51, optionModifier);
  rig.type(49, controlModifier);
  rig.type(53, 0);
  rig.type(126, shiftModifier);
  EXPECT_EQ(combos(6), (Combos{"⇧⌘S", "⏎", "⌥⌫", "⌃空格", "esc", "⇧↑"}));
}

TEST_F(X11InputSourceTest, modifiersAreNoKeys) {
  const auto listening = listen();
  typeKeys({50, 37, 64, 133, 62, 105, 108, 134, 66, 66, 38});
  EXPECT_EQ(combos(1), (Combos{"A"}));
}

TEST_F(X11InputSourceTest, capsLockAndControlDoNotChangeWhatAKeyTypes) {
  const auto listening = listen();
  typeKeys({66});
  rig.type(0, 0);
  rig.type(0, controlModifier);
  typeKeys({66});
  (void)combos(2);
  const auto keys = only<KeyPress>(heard);
  ASSERT_EQ(keys.size(), 2U);
  EXPECT_EQ(keys[0].characters, "a");
  EXPECT_EQ(keys[1].characters, "a");
}

TEST_F(X11InputSourceTest, theKeypadTypesDigitsWithNumLock) {
  const auto listening = listen();
  typeKeys({77, 87, 77});  // Num Lock is a key that types nothing, but no modifier
  (void)combos(3);
  EXPECT_EQ(only<KeyPress>(heard).at(1).keyCode, 83);
  EXPECT_EQ(only<KeyPress>(heard).at(1).characters, "1");
}

TEST_F(X11InputSourceTest, anotherLayoutIsFollowed) {
  const auto listening = listen();
  rig.type(12, 0);
  EXPECT_EQ(combos(1), (Combos{"Q"}));
  ASSERT_EQ(rig.display().run({"setxkbmap", "fr"}), 0);
  rig.type(12, 0);
  ASSERT_EQ(rig.display().run({"setxkbmap", "us,ru"}), 0);
  rig.type(12, 0);
  EXPECT_EQ(combos(3), (Combos{"Q", "A", "Q"}));
}

TEST_F(X11InputSourceTest, aHeldKeyIsToldAgainUntilItIsReleased) {
  ASSERT_EQ(rig.display().run({"xset", "r", "rate", "200", "50"}), 0);
  const auto listening = listen();
  rig.user().pressKey(38);
  ASSERT_TRUE(heard.comesTo(4));
  rig.user().releaseKey(38);
  rig.type(1, 0);
  const auto isS = [](const InputEvent& event) {
    const auto* key = std::get_if<KeyPress>(&event);
    return key != nullptr && key->keyCode == 1;
  };
  ASSERT_TRUE(heard.has(isS));
  const auto count = heard.count();
  const auto keys = only<KeyPress>(heard);
  EXPECT_NEAR(keys[1].time - keys[0].time, 0.2, 0.005);
  EXPECT_NEAR(keys[2].time - keys[1].time, 0.02, 0.005);
  std::this_thread::sleep_for(std::chrono::milliseconds{100});
  EXPECT_EQ(heard.count(), count);
}

TEST_F(X11InputSourceTest, aKeyThatTheUserDoesNotWantRepeatedIsToldOnce) {
  ASSERT_EQ(rig.display().run({"xset", "-r"}), 0);
  const auto listening = listen();
  rig.user().pressKey(38);
  std::this_thread::sleep_for(std::chrono::milliseconds{800});
  rig.user().releaseKey(38);
  rig.type(1, 0);
  EXPECT_EQ(combos(2), (Combos{"A", "S"}));
}

TEST_F(X11InputSourceTest, buttonsActAsTheUserHasMappedThem) {
  const auto listening = listen();
  ASSERT_EQ(rig.display().run({"xmodmap", "-e", "pointer = 3 2 1 5 4 6 7 8 9 10"}), 0);
  rig.user().clickButton(1);
  rig.user().clickButton(4);
  ASSERT_TRUE(heard.comesTo(3));
  EXPECT_EQ(only<ButtonChange>(heard).at(0).button, TestUser::Button::right);
  EXPECT_LT(only<ScrollStep>(heard).at(0).dy, 0);
}

TEST_F(X11InputSourceTest, isHeardThoughAnotherClientHasGrabbedTheDevices) {
  const auto grabber = Connection::open(rig.display().name()).value();
  const auto keyboard = owned(
      xcb_grab_keyboard_reply(grabber.get(),
                              xcb_grab_keyboard(grabber.get(), 0, grabber.root(), XCB_CURRENT_TIME,
                                                XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC),
                              nullptr));
  const auto pointer = owned(xcb_grab_pointer_reply(
      grabber.get(),
      xcb_grab_pointer(grabber.get(), 0, grabber.root(), XCB_EVENT_MASK_BUTTON_PRESS,
                       XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC, XCB_NONE, XCB_NONE,
                       XCB_CURRENT_TIME),
      nullptr));
  ASSERT_TRUE(keyboard && keyboard->status == XCB_GRAB_STATUS_SUCCESS);
  ASSERT_TRUE(pointer && pointer->status == XCB_GRAB_STATUS_SUCCESS);
  const auto listening = listen();
  rig.type(0, shiftModifier);
  rig.press(TestUser::Button::left);
  EXPECT_EQ(combos(1), (Combos{"⇧A"}));
  EXPECT_TRUE(contract::comesTrue([&] { return only<ButtonChange>(heard).size() == 1; }));
}

TEST_F(X11InputSourceTest, aServerThatDiesLeavesNothingToTell) {
  const auto listening = listen();
  rig.display().kill();
  EXPECT_TRUE(contract::comesTrue([&] { return !rig.source().pointerPosition(); }));
  EXPECT_FALSE(rig.source().listen(true, heard.adder()));
  EXPECT_EQ(heard.count(), 0U);
}

TEST(X11InputSource, cannotBeOpenedWithoutAServer) {
  const auto source = X11InputSource::open(":987");
  ASSERT_FALSE(source);
  EXPECT_FALSE(source.error().message.empty());
}

}  // namespace
}  // namespace vesk::capture::x11::test

namespace vesk::capture::contract {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(X11, InputSourceContract, x11::test::X11InputRig);

}  // namespace
}  // namespace vesk::capture::contract
