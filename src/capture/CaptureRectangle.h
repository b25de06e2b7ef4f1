#pragma once

#include <cstdint>
#include <mutex>
#include <optional>

#include "capture/DisplayGeometry.h"
#include "capture/Geometry.h"
#include "package/CaptureScope.h"

namespace vesk::capture {

/// The part of the screen that the picture of a running take shows. It follows a window that moves
/// or is resized; that of a display or region stays as it was at the start. May be asked from any
/// thread.
class CaptureRectangle {
 public:
  /// @param geometry must outlive the rectangle.
  /// @param now seconds, as all times here, of one clock.
  CaptureRectangle(const package::CaptureScope& scope, const Display& target,
                   const DisplayGeometry& geometry, double now);

  /// A window is looked up at most ten times a second. While it cannot be found, the last known
  /// rectangle stands.
  package::Rect current(double now);

 private:
  bool beginsRefresh(double now);
  package::Rect known();

  const DisplayGeometry& geometry_;
  std::optional<std::uint32_t> windowID_;  ///< of a take of a window
  ScreenSize bufferSize_;                  ///< of the window at the start
  std::mutex mutex_;                       ///< guards what follows
  package::Rect rectangle_;
  double refreshedAt_;
};

}  // namespace vesk::capture
