#include "capture/fake/FakePicture.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace vesk::capture::fake {
namespace {

constexpr std::size_t bytesPerPixel = 4;

std::array<std::uint8_t, bytesPerPixel> bgra(std::uint32_t colour) {
  return {static_cast<std::uint8_t>(colour), static_cast<std::uint8_t>(colour >> 8U),
          static_cast<std::uint8_t>(colour >> 16U), 0xFF};
}

}  // namespace

FakePicture::FakePicture(PixelSize size, std::uint32_t colour)
    : size_{size},
      bytes_(bytesPerPixel * static_cast<std::size_t>(size.width) *
             static_cast<std::size_t>(size.height)) {
  fill({.x = 0, .y = 0, .width = size.width, .height = size.height}, colour);
}

void FakePicture::fill(const media::PixelRect& area, std::uint32_t colour) {
  const auto pixel = bgra(colour);
  const int right = std::min(area.x + area.width, size_.width);
  const int bottom = std::min(area.y + area.height, size_.height);
  for (int y = std::max(area.y, 0); y < bottom; ++y) {
    for (int x = std::max(area.x, 0); x < right; ++x) {
      const std::ptrdiff_t index = static_cast<std::ptrdiff_t>(y) * size_.width + x;
      std::ranges::copy(pixel, bytes_.begin() + index * static_cast<std::ptrdiff_t>(bytesPerPixel));
    }
  }
}

media::BgraView FakePicture::view() const {
  return {.data = bytes_.data(),
          .stride = static_cast<std::ptrdiff_t>(bytesPerPixel) * size_.width,
          .width = size_.width,
          .height = size_.height};
}

}  // namespace vesk::capture::fake
