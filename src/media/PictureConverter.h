#pragma once

#include <cstddef>
#include <cstdint>

#include "media/I420Picture.h"

namespace vesk::media {

/// A picture of four bytes a pixel (blue, green, red and one that is ignored), the top row first.
/// The pixels are full range and belong to the caller.
struct BgraView {
  const std::uint8_t* data = nullptr;
  std::ptrdiff_t stride = 0;  ///< bytes from one row to the next
  int width = 0;
  int height = 0;
};

struct PixelRect {
  int x = 0;
  int y = 0;
  int width = 0;
  int height = 0;
  bool operator==(const PixelRect&) const = default;
};

/// The smallest rectangle with even corners that holds `rect`, cut to a picture of even size.
[[nodiscard]] PixelRect evenRect(PixelRect rect, int pictureWidth, int pictureHeight) noexcept;

/// Converts a whole picture to BT.709 limited range (ITU-R BT.709-6, item 3), both of one size.
/// Chroma is that of the mean of each block of 2×2 pixels, hence sited in the centre. A sample
/// differs from the exact value by no more than its rounding (plus 0.02 of a step), and the result
/// is the same on every processor.
void convertToI420(const BgraView& source, I420Picture& target);

/// The same for a part only, given with even corners inside the picture; the rest of `target`
/// stays.
void convertToI420(const BgraView& source, PixelRect part, I420Picture& target);

}  // namespace vesk::media
