#include "capture/Geometry.h"

#include <algorithm>
#include <cmath>

namespace vesk::capture {
namespace {

constexpr double edgeMargin = 0.001;
/// Far beyond any screen; keeps a senseless size within an int.
constexpr double largestSide = 1 << 24;

/// Nothing for a coordinate that lies too far out or is no number.
std::optional<double> withinEdges(double coordinate) {
  const bool isNear = coordinate >= -edgeMargin && coordinate <= 1 + edgeMargin;
  if (!isNear) return std::nullopt;
  return std::clamp(coordinate, 0.0, 1.0);
}

int evenPixels(double length, double scaleFactor) {
  const double pixels = length * scaleFactor;
  if (!(pixels > 0)) return 0;
  return static_cast<int>(std::min(pixels, largestSide)) & ~1;
}

bool hasArea(const ScreenSize& size) {
  return size.width > 0 && size.height > 0;
}

}  // namespace

ScreenSize sizeOf(const package::Rect& rect) {
  return {.width = rect.width, .height = rect.height};
}

bool intersects(const package::Rect& a, const package::Rect& b) {
  return a.x < b.x + b.width && b.x < a.x + a.width &&  //
         a.y < b.y + b.height && b.y < a.y + a.height;
}

std::optional<PicturePoint> normalised(const ScreenPoint& point, const package::Rect& rect) {
  if (!hasArea(sizeOf(rect))) return std::nullopt;
  const auto x = withinEdges((point.x - rect.x) / rect.width);
  const auto y = withinEdges((point.y - rect.y) / rect.height);
  if (!x || !y) return std::nullopt;
  return PicturePoint{.x = *x, .y = *y};
}

package::Rect fittedToBuffer(const package::Rect& windowFrame, const ScreenSize& buffer) {
  if (!hasArea(sizeOf(windowFrame)) || !hasArea(buffer)) return windowFrame;
  const double scale =
      std::min({buffer.width / windowFrame.width, buffer.height / windowFrame.height, 1.0});
  return {.x = windowFrame.x,
          .y = windowFrame.y,
          .width = buffer.width / scale,
          .height = buffer.height / scale};
}

PixelSize evenPixelSize(const ScreenSize& size, double scaleFactor) {
  return {.width = evenPixels(size.width, scaleFactor),
          .height = evenPixels(size.height, scaleFactor)};
}

package::Rect flipped(const package::Rect& rect, double primaryHeight) {
  return {.x = rect.x,
          .y = primaryHeight - rect.y - rect.height,
          .width = rect.width,
          .height = rect.height};
}

}  // namespace vesk::capture
