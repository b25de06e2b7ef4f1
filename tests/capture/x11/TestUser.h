#pragma once

#include <cstdint>

#include "capture/Geometry.h"
#include "capture/ModifierFlags.h"
#include "capture/x11/Connection.h"
#include "capture/x11/KeyTable.h"
#include "package/RecordedEvent.h"

namespace vesk::capture::x11::test {

/// Somebody at the mouse and keyboard of a display server (XTEST). What they do has been done when
/// a call returns.
class TestUser {
 public:
  using Button = package::RecordedEvent::Button;

  /// @param connection must outlive the user.
  explicit TestUser(const Connection& connection) : connection_{connection} {}

  void movePointer(const ScreenPoint& point) const;
  void pressButton(std::uint8_t number) const;
  void releaseButton(std::uint8_t number) const;
  void clickButton(std::uint8_t number) const;
  void pressKey(XKeyCode key) const;
  void releaseKey(XKeyCode key) const;
  /// Presses a key and lets it go.
  void typeKey(XKeyCode key) const;
  /// With modifiers held.
  void type(KeyCode keyCode, ModifierFlags modifiers) const;

  static std::uint8_t numberOf(Button button);

 private:
  void fake(std::uint8_t type, std::uint8_t detail, const ScreenPoint& at = {}) const;

  const Connection& connection_;
};

}  // namespace vesk::capture::x11::test
