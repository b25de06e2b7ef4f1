#pragma once

#include <expected>
#include <memory>
#include <mutex>
#include <optional>
#include <string>

#include "capture/BackendError.h"
#include "capture/InputSource.h"
#include "capture/x11/Connection.h"
#include "capture/x11/SecureInputWatch.h"

namespace vesk::capture::x11 {

/// The mouse and keyboard of a display server, by its extension XInput 2. Keys that repeat are told
/// again each time, keys that are modifiers never.
class X11InputSource final : public InputSource {
 public:
  /// @param display as for `Connection::open`.
  static std::expected<std::unique_ptr<X11InputSource>, BackendError> open(
      const std::string& display = {});

  std::expected<std::unique_ptr<Listening>, BackendError> listen(bool includesKeys,
                                                                 Callback callback) override;
  std::optional<ScreenPoint> pointerPosition() const override;
  bool isSecureInput() const override { return secureInput_.isOn(); }

 private:
  X11InputSource(std::string display, Connection connection);

  std::string display_;
  Connection pointerConnection_;  ///< on which no event makes an answer wait
  mutable std::mutex pointerMutex_;
  SecureInputWatch secureInput_;
};

}  // namespace vesk::capture::x11
