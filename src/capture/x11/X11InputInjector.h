#pragma once

#include <expected>
#include <memory>
#include <string>

#include "capture/InputInjector.h"
#include "capture/x11/Connection.h"
#include "capture/x11/KeyTable.h"

namespace vesk::capture::x11 {

/// Plays the user of a display server through its extension XTEST.
class X11InputInjector final : public InputInjector {
 public:
  /// @param display as for `Connection::open`.
  static std::expected<std::unique_ptr<X11InputInjector>, BackendError> open(
      const std::string& display = {});

  bool movePointer(const ScreenPoint& position) override;
  bool press(const Shortcut& shortcut) override;

 private:
  explicit X11InputInjector(Connection connection);
  bool key(KeyCode keyCode, bool isDown);
  bool send(std::uint8_t type, std::uint8_t detail, const ScreenPoint& position);

  Connection connection_;
};

}  // namespace vesk::capture::x11
