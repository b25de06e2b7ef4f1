#include "capture/x11/Pixels.h"

#include <algorithm>
#include <cstring>

namespace vesk::capture::x11 {
namespace {

constexpr std::uint32_t opaque = 0xFF000000;

/// a · b / 255, rounded, for 0…255 each.
std::uint32_t scaled(std::uint32_t a, std::uint32_t b) {
  const std::uint32_t product = a * b + 128;
  return (product + (product >> 8U)) >> 8U;
}

std::uint32_t over(std::uint32_t above, std::uint32_t below) {
  const std::uint32_t transparency = 255 - (above >> 24U);
  std::uint32_t result = opaque;
  for (const unsigned shift : {0U, 8U, 16U}) {
    const std::uint32_t sum =
        ((above >> shift) & 0xFFU) + scaled((below >> shift) & 0xFFU, transparency);
    result |= std::min<std::uint32_t>(sum, 0xFF) << shift;
  }
  return result;
}

}  // namespace

media::BgraView Pixels::view() const {
  return {.data = reinterpret_cast<const std::uint8_t*>(data),
          .stride = stride * static_cast<std::ptrdiff_t>(sizeof *data),
          .width = width,
          .height = height};
}

Pixels part(const Pixels& pixels, const media::PixelRect& rect) {
  return {.data = pixels.row(rect.y) + rect.x,
          .stride = pixels.stride,
          .width = rect.width,
          .height = rect.height};
}

void copy(const Pixels& source, const Pixels& target) {
  const std::size_t bytes = static_cast<std::size_t>(target.width) * sizeof *target.data;
  for (int y = 0; y < target.height; ++y) std::memcpy(target.row(y), source.row(y), bytes);
}

void blend(const Pixels& source, const Pixels& target) {
  for (int y = 0; y < target.height; ++y) {
    const std::uint32_t* const above = source.row(y);
    std::transform(above, above + target.width, target.row(y), target.row(y), over);
  }
}

void makeOpaque(const Pixels& pixels) {
  for (int y = 0; y < pixels.height; ++y) {
    std::uint32_t* const row = pixels.row(y);
    for (int x = 0; x < pixels.width; ++x) row[x] |= opaque;
  }
}

void fill(const Pixels& pixels, std::uint32_t colour) {
  for (int y = 0; y < pixels.height; ++y) std::fill_n(pixels.row(y), pixels.width, colour);
}

}  // namespace vesk::capture::x11
