#pragma once

#include <cstdint>
#include <optional>
#include <span>

#include "capture/Geometry.h"

namespace vesk::capture::camera {

/// How a camera lays its pixels out. Of two that are equal otherwise, the earlier is preferred.
enum class PixelLayout : std::uint8_t {
  bgrx,   ///< blue, green, red and one byte that is ignored or opaque
  rgbx,   ///< the same with red first
  nv12,   ///< Y, then Cb and Cr in turn at half width and height
  i420,   ///< Y, Cb, Cr, the latter two at half width and height
  yuy2,   ///< Y, Cb, Y, Cr in turn
  mjpeg,  ///< each frame a JPEG file
};

/// What a camera can be set to.
struct CameraFormat {
  PixelLayout layout = PixelLayout::bgrx;
  PixelSize size;
  double framesPerSecond = 0;  ///< at most; 0 when not known
  bool operator==(const CameraFormat&) const = default;
};

/// Sizes in steps from the least to the most.
struct SizeRange {
  PixelSize least;
  PixelSize most;
  PixelSize step{1, 1};
};
[[nodiscard]] PixelSize closestSize(const SizeRange& range, PixelSize wanted);

/// The rate to ask a camera for: 30 frames a second, or as many as there are.
[[nodiscard]] int frameRateOf(const CameraFormat& format);

/// The one whose size is closest to what is wanted; of those, one of 30 frames a second or as many
/// as there are; of those, the one that is read with the least work. Nothing of nothing, and no
/// size beyond 8192 pixels.
[[nodiscard]] std::optional<CameraFormat> bestFormat(std::span<const CameraFormat> formats,
                                                     PixelSize wanted);

}  // namespace vesk::capture::camera
