#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "capture/camera/RawPicture.h"
#include "media/PictureConverter.h"

namespace vesk::capture::camera {

/// Makes of a camera's frames what can be shown: opaque and upright. The memory is reused. Y, Cb
/// and Cr are taken for BT.601, limited range, and in a JPEG file for full range, as the makers of
/// cameras do.
class UprightPicture {
 public:
  /// The view holds until the next call. Nothing when the frame is damaged or has less than it
  /// should.
  [[nodiscard]] std::optional<media::BgraView> convert(const RawPicture& raw, Turn turn = {});

 private:
  struct Pixels {
    std::vector<std::uint8_t> bytes;
    PixelSize size;

    void resize(PixelSize newSize);
    void makeOpaque();
    std::uint8_t* data() { return bytes.data(); }
    [[nodiscard]] int stride() const { return 4 * size.width; }
  };

  void turnBy(Turn turn);

  Pixels pixels_;
  Pixels turned_;
};

}  // namespace vesk::capture::camera
