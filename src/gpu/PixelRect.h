#pragma once

#include <algorithm>

namespace vesk::gpu {

/// A rectangle of whole pixels, origin top left, y down.
struct PixelRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const PixelRect&) const = default;

  bool isEmpty() const { return width <= 0 || height <= 0; }
  int right() const { return x + width; }
  int bottom() const { return y + height; }

  /// The part common to both; empty when they do not meet.
  PixelRect intersection(const PixelRect& other) const {
    const int left = std::max(x, other.x);
    const int top = std::max(y, other.y);
    return {left, top, std::max(std::min(right(), other.right()) - left, 0),
            std::max(std::min(bottom(), other.bottom()) - top, 0)};
  }

  /// The smallest rectangle that holds both; an empty one adds nothing.
  PixelRect united(const PixelRect& other) const {
    if (isEmpty()) return other;
    if (other.isEmpty()) return *this;
    const int left = std::min(x, other.x);
    const int top = std::min(y, other.y);
    return {left, top, std::max(right(), other.right()) - left,
            std::max(bottom(), other.bottom()) - top};
  }
};

}  // namespace vesk::gpu
