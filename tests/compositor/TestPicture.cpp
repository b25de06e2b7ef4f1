#include "compositor/TestPicture.h"

#include <algorithm>
#include <cmath>
#include <cstring>
#include <memory>
#include <vector>

namespace vesk::compositor::test {
namespace {

using media::PixelLayout;

bool isHalfWide(PixelLayout layout) {
  return layout != PixelLayout::yuv444p8 && layout != PixelLayout::yuv444p10;
}

bool isHalfHigh(PixelLayout layout) {
  return layout == PixelLayout::yuv420p8 || layout == PixelLayout::yuv420p10;
}

void putSample(std::byte* place, int bytes, int value) {
  if (bytes == 1) {
    *place = static_cast<std::byte>(value);
  } else {
    const auto wide = static_cast<std::uint16_t>(value);
    std::memcpy(place, &wide, sizeof wide);
  }
}

}  // namespace

media::VideoFrame makePicture(const PictureFormat& format,
                              const std::function<int(int, int, int)>& sample) {
  using Planes = std::array<std::vector<std::byte>, 3>;
  const auto storage = std::make_shared<Planes>();
  const int bytes = media::bytesPerSample(format.layout);
  media::VideoFrame picture{.width = format.width,
                            .height = format.height,
                            .layout = format.layout,
                            .matrix = format.matrix,
                            .range = format.range,
                            .siting = format.siting,
                            .storage = storage};
  for (int plane = 0; plane < 3; ++plane) {
    const bool isChroma = plane > 0;
    const int width = isChroma && isHalfWide(format.layout) ? (format.width + 1) / 2 : format.width;
    const int height =
        isChroma && isHalfHigh(format.layout) ? (format.height + 1) / 2 : format.height;
    const std::ptrdiff_t stride = std::ptrdiff_t{width} * bytes + 6 + (bytes == 1 ? 1 : 0);
    const auto index = static_cast<std::size_t>(plane);
    std::vector<std::byte>& rows = storage->at(index);
    rows.resize(static_cast<std::size_t>(stride * height));
    for (int y = 0; y < height; ++y) {
      for (int x = 0; x < width; ++x) {
        putSample(rows.data() + y * stride + std::ptrdiff_t{x} * bytes, bytes, sample(plane, x, y));
      }
    }
    picture.planes.at(index) = {
        .data = rows.data(), .stride = stride, .width = width, .height = height};
  }
  return picture;
}

int sampleAt(const media::VideoFrame& picture, int plane, int x, int y) {
  const media::VideoPlane& rows = picture.planes.at(static_cast<std::size_t>(plane));
  const int bytes = media::bytesPerSample(picture.layout);
  const std::byte* place = rows.data + y * rows.stride + std::ptrdiff_t{x} * bytes;
  if (bytes == 1) return static_cast<int>(*place);
  std::uint16_t wide = 0;
  std::memcpy(&wide, place, sizeof wide);
  return wide;
}

media::VideoFrame withSamples(const media::VideoFrame& picture,
                              const std::function<int(int, int, int)>& sample) {
  const PictureFormat format{.width = picture.width,
                             .height = picture.height,
                             .layout = picture.layout,
                             .matrix = picture.matrix,
                             .range = picture.range,
                             .siting = picture.siting};
  return makePicture(format, [&](int plane, int x, int y) {
    const int value = sample(plane, x, y);
    return value >= 0 ? value : sampleAt(picture, plane, x, y);
  });
}

media::VideoFrame makeRgbPicture(int width, int height,
                                 const std::function<glm::dvec3(glm::dvec2)>& color) {
  return makePicture({.width = width, .height = height}, [&](int plane, int x, int y) {
    const glm::dvec3 rgb = color({x + 0.5, y + 0.5});
    const double luma = 0.2126 * rgb.r + 0.7152 * rgb.g + 0.0722 * rgb.b;
    double value = luma * 255;
    if (plane == 1) value = (rgb.b - luma) / 1.8556 * 255 + 128;
    if (plane == 2) value = (rgb.r - luma) / 1.5748 * 255 + 128;
    return static_cast<int>(std::clamp(std::lround(value), 0L, 255L));
  });
}

}  // namespace vesk::compositor::test
