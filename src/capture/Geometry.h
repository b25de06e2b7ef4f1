#pragma once

#include <optional>

#include "package/CaptureScope.h"

// Positions and sizes, in one of two planes with the same x for all displays:
// - on the screen, as the display server counts: y down from the top;
// - in global points, as the user counts: y up from the bottom left of the primary display.
// A `package::Rect` is on the screen unless it says otherwise. Pure functions, for any thread.
namespace vesk::capture {

struct ScreenPoint {
  double x = 0;
  double y = 0;
  bool operator==(const ScreenPoint&) const = default;
};

struct ScreenSize {
  double width = 0;
  double height = 0;
  bool operator==(const ScreenSize&) const = default;
};

/// A position in the recorded picture, from (0, 0) at its top left to (1, 1) at its bottom right.
struct PicturePoint {
  double x = 0;
  double y = 0;
  bool operator==(const PicturePoint&) const = default;
};

struct PixelSize {
  int width = 0;
  int height = 0;
  bool operator==(const PixelSize&) const = default;
};

ScreenSize sizeOf(const package::Rect& rect);

/// Whether two rectangles share an area; a common edge is none.
bool intersects(const package::Rect& a, const package::Rect& b);

/// Where a point of the screen lies in the picture of a rectangle. A point less than a thousandth
/// of the picture outside counts as on its edge; one further out, or of a rectangle without area,
/// has no position.
std::optional<PicturePoint> normalised(const ScreenPoint& point, const package::Rect& rect);

/// The part of the screen that a buffer of fixed size shows of a window. A window larger than the
/// buffer is scaled down to fit, a smaller one is shown at its size; its top left corner is the
/// buffer's in both cases. A size without area leaves the window's frame as it is.
package::Rect fittedToBuffer(const package::Rect& windowFrame, const ScreenSize& buffer);

/// The size of a picture in pixels, both numbers even as the encoders want them.
/// @param scaleFactor pixels per unit of the screen.
PixelSize evenPixelSize(const ScreenSize& size, double scaleFactor);

/// A rectangle of one plane in the other, whichever of the two it is in.
/// @param primaryHeight as `primaryHeight` gives it for the displays there are.
package::Rect flipped(const package::Rect& rect, double primaryHeight);

}  // namespace vesk::capture
