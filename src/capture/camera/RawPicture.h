#pragma once

#include <cstddef>
#include <cstdint>
#include <span>

#include "capture/camera/CameraFormat.h"

namespace vesk::capture::camera {

/// A frame as it comes from a camera, in memory of the camera's.
struct RawPicture {
  /// A part of the frame in one piece.
  struct Piece {
    std::span<const std::uint8_t> bytes;
    std::ptrdiff_t stride = 0;  ///< bytes from one row to the next; 0 where nothing lies between
  };

  PixelLayout layout = PixelLayout::bgrx;
  PixelSize size;
  /// One for each plane, or a single one in which the planes follow each other.
  std::span<const Piece> pieces;
};

/// What is to be done to a picture to make it upright: first it is turned, then mirrored, left
/// for right.
struct Turn {
  int quartersClockwise = 0;  ///< 0…3
  bool isMirrored = false;
  bool operator==(const Turn&) const = default;
};

}  // namespace vesk::capture::camera
