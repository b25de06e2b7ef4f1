#include "capture/x11/X11InputInjector.h"

#include <xcb/xcb.h>
#include <xcb/xtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <ranges>
#include <utility>
#include <vector>

#include "capture/ModifierFlags.h"

namespace vesk::capture::x11 {
namespace {

struct ModifierKey {
  ModifierFlags flag;
  KeyCode keyCode;
};
/// The left one of each pair.
constexpr std::array<ModifierKey, 4> modifierKeys{
    {{controlModifier, 59}, {optionModifier, 58}, {shiftModifier, 56}, {commandModifier, 55}}};

}  // namespace

std::expected<std::unique_ptr<X11InputInjector>, BackendError> X11InputInjector::open(
    const std::string& display) {
  auto connection = Connection::open(display);
  if (!connection) return std::unexpected(connection.error());
  const auto* const extension = xcb_get_extension_data(connection->get(), &xcb_test_id);
  if (!extension || extension->present == 0) {
    return std::unexpected(BackendError{"X 显示服务器没有 XTEST 扩展"});
  }
  return std::unique_ptr<X11InputInjector>{new X11InputInjector{*std::move(connection)}};
}

X11InputInjector::X11InputInjector(Connection connection) : connection_{std::move(connection)} {}

bool X11InputInjector::movePointer(const ScreenPoint& position) {
  return send(XCB_MOTION_NOTIFY, 0, position);
}

bool X11InputInjector::press(const Shortcut& shortcut) {
  std::vector<KeyCode> keys;
  for (const auto& modifier : modifierKeys) {
    if ((shortcut.modifierFlags & modifier.flag) != 0) keys.push_back(modifier.keyCode);
  }
  keys.push_back(shortcut.keyCode);
  const auto down = [this](KeyCode keyCode) { return key(keyCode, true); };
  const auto up = [this](KeyCode keyCode) { return key(keyCode, false); };
  const bool isPressed = std::ranges::all_of(keys, down);
  return std::ranges::all_of(keys | std::views::reverse, up) && isPressed;
}

bool X11InputInjector::key(KeyCode keyCode, bool isDown) {
  const auto code = xKeyCodeOf(keyCode);
  return code && send(isDown ? XCB_KEY_PRESS : XCB_KEY_RELEASE, *code, {});
}

bool X11InputInjector::send(std::uint8_t type, std::uint8_t detail, const ScreenPoint& position) {
  const auto cookie = xcb_test_fake_input_checked(
      connection_.get(), type, detail, XCB_CURRENT_TIME, connection_.root(),
      static_cast<std::int16_t>(std::lround(position.x)),
      static_cast<std::int16_t>(std::lround(position.y)), 0);
  return owned(xcb_request_check(connection_.get(), cookie)) == nullptr && connection_.isAlive();
}

}  // namespace vesk::capture::x11
