#pragma once

#include <cstdint>
#include <vector>

#include "capture/Geometry.h"
#include "media/PictureConverter.h"

namespace vesk::capture::fake {

/// A picture in which a test paints.
class FakePicture {
 public:
  /// @param colour of every pixel, 0xRRGGBB.
  explicit FakePicture(PixelSize size, std::uint32_t colour = 0);

  /// Paints the part of `area` that lies in the picture.
  void fill(const media::PixelRect& area, std::uint32_t colour);
  /// Of this picture's own pixels.
  media::BgraView view() const;

 private:
  PixelSize size_;
  std::vector<std::uint8_t> bytes_;
};

}  // namespace vesk::capture::fake
