#pragma once

#include <expected>
#include <memory>
#include <string>
#include <vector>

#include "capture/BackendError.h"
#include "capture/DisplayGeometry.h"
#include "capture/x11/Connection.h"

namespace vesk::capture::x11 {

/// The monitors and windows of a display server. A display's number follows from its monitor's name
/// and is the same after a restart. A window's number is that of the application's window; its
/// frame is the window manager's. The uppermost window comes first.
class X11DisplayGeometry final : public DisplayGeometry {
 public:
  /// @param display as for `Connection::open`.
  static std::expected<std::unique_ptr<X11DisplayGeometry>, BackendError> open(
      const std::string& display = {});

  std::vector<Display> displays() const override;
  std::optional<Display> focusedDisplay() const override;
  std::expected<std::vector<ScreenWindow>, BackendError> windows() const override;
  std::optional<package::Rect> windowFrame(std::uint32_t id) const override;

 private:
  explicit X11DisplayGeometry(Connection connection);
  std::optional<package::Rect> activeFrame() const;

  Connection connection_;
};

}  // namespace vesk::capture::x11
