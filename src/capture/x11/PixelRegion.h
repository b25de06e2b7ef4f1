#pragma once

#include <utility>
#include <vector>

#include "media/PictureConverter.h"

namespace vesk::capture::x11 {

/// Where two rectangles overlap; without area where they do not.
media::PixelRect overlap(const media::PixelRect& a, const media::PixelRect& b);
bool isEmpty(const media::PixelRect& rect);
media::PixelRect moved(media::PixelRect rect, int dx, int dy);

/// A set of pixels, as rectangles that do not overlap. Meant for a handful of them.
class PixelRegion {
 public:
  PixelRegion() = default;
  explicit PixelRegion(const media::PixelRect& rect) { add(rect); }
  /// @param rects that do not overlap, each with an area.
  explicit PixelRegion(std::vector<media::PixelRect> rects) : rects_{std::move(rects)} {}

  [[nodiscard]] bool isEmpty() const { return rects_.empty(); }
  [[nodiscard]] const std::vector<media::PixelRect>& rects() const { return rects_; }
  /// The smallest rectangle around all of it; without area when it is empty.
  [[nodiscard]] media::PixelRect bounds() const;

  void add(const media::PixelRect& rect);
  void add(const PixelRegion& other);
  void subtract(const media::PixelRect& rect);
  void subtract(const PixelRegion& other);

  [[nodiscard]] PixelRegion within(const media::PixelRect& rect) const;
  [[nodiscard]] PixelRegion within(const PixelRegion& other) const;
  [[nodiscard]] PixelRegion moved(int dx, int dy) const;

 private:
  std::vector<media::PixelRect> rects_;
};

/// `from` without `what`.
PixelRegion without(PixelRegion from, const PixelRegion& what);

/// Whether both hold the same pixels.
bool areEqual(const PixelRegion& a, const PixelRegion& b);

}  // namespace vesk::capture::x11
