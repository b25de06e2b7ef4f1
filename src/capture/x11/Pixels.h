#pragma once

#include <cstddef>
#include <cstdint>

#include "media/PictureConverter.h"

namespace vesk::capture::x11 {

inline constexpr std::uint32_t black = 0xFF000000;

/// Pixels in memory that belongs to somebody else, each 0xAARRGGBB, the top row first.
struct Pixels {
  std::uint32_t* data = nullptr;
  std::ptrdiff_t stride = 0;  ///< pixels from one row to the next
  int width = 0;
  int height = 0;

  [[nodiscard]] std::uint32_t* row(int y) const { return data + y * stride; }
  [[nodiscard]] media::BgraView view() const;
};

/// The part of a picture that a rectangle inside it holds.
Pixels part(const Pixels& pixels, const media::PixelRect& rect);

// Both of one size.
void copy(const Pixels& source, const Pixels& target);
/// Lays colours that are multiplied by their opacity over an opaque picture.
void blend(const Pixels& source, const Pixels& target);

void makeOpaque(const Pixels& pixels);
void fill(const Pixels& pixels, std::uint32_t colour);

}  // namespace vesk::capture::x11
