#pragma once

#include <cstddef>
#include <glm/vec2.hpp>
#include <optional>
#include <vector>

#include "package/StyleSettings.h"

// The cursor's looks: their measures in cursor points, and the bitmap of each.
namespace vesk::compositor {

struct CursorGeometry {
  glm::dvec2 size{24, 24};   ///< points
  glm::dvec2 hotspot{0, 0};  ///< points from the top left
  bool operator==(const CursorGeometry&) const = default;
};

CursorGeometry cursorGeometry(package::CursorStyle style);

/// Bitmap of a cursor at 4 pixels a point: premultiplied BGRA bytes, rows packed, top row first.
struct CursorImage {
  static constexpr int pixelsPerPoint = 4;

  int width = 0;
  int height = 0;
  std::vector<std::byte> pixels;

  std::ptrdiff_t stride() const { return static_cast<std::ptrdiff_t>(width) * 4; }
  bool operator==(const CursorImage&) const = default;
};

/// Draws the style; nothing when the drawing library refuses.
std::optional<CursorImage> drawCursorImage(package::CursorStyle style);

}  // namespace vesk::compositor
