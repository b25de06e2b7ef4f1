#include "capture/x11/TestUser.h"

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <utility>
#include <vector>

namespace vesk::capture::x11::test {
namespace {

constexpr std::pair<ModifierFlags, XKeyCode> modifierKeys[] = {
    {shiftModifier, 50}, {controlModifier, 37}, {optionModifier, 64}, {commandModifier, 133}};

}  // namespace

void TestUser::movePointer(const ScreenPoint& point) const {
  fake(XCB_MOTION_NOTIFY, 0, point);
}

void TestUser::pressButton(std::uint8_t number) const {
  fake(XCB_BUTTON_PRESS, number);
}

void TestUser::releaseButton(std::uint8_t number) const {
  fake(XCB_BUTTON_RELEASE, number);
}

void TestUser::clickButton(std::uint8_t number) const {
  pressButton(number);
  releaseButton(number);
}

void TestUser::pressKey(XKeyCode key) const {
  fake(XCB_KEY_PRESS, key);
}

void TestUser::releaseKey(XKeyCode key) const {
  fake(XCB_KEY_RELEASE, key);
}

void TestUser::typeKey(XKeyCode key) const {
  pressKey(key);
  releaseKey(key);
}

void TestUser::type(KeyCode keyCode, ModifierFlags modifiers) const {
  std::vector<XKeyCode> held;
  for (const auto& [flag, key] : modifierKeys) {
    if ((modifiers & flag) != 0) held.push_back(key);
  }
  for (const auto key : held) pressKey(key);
  typeKey(xKeyCodeOf(keyCode).value());
  for (const auto key : held) releaseKey(key);
}

std::uint8_t TestUser::numberOf(Button button) {
  switch (button) {
    case Button::left:
      return 1;
    case Button::right:
      return 3;
    default:
      return 2;
  }
}

void TestUser::fake(std::uint8_t type, std::uint8_t detail, const ScreenPoint& at) const {
  xcb_test_fake_input(connection_.get(), type, detail, XCB_CURRENT_TIME, connection_.root(),
                      static_cast<std::int16_t>(at.x), static_cast<std::int16_t>(at.y), 0);
  owned(xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()),
                                  nullptr));
}

}  // namespace vesk::capture::x11::test
