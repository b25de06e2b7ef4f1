#include <gtest/gtest.h>

#include <array>
#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <memory>
#include <vector>

#include "media/RgbConversion.h"

namespace vesk::media {
namespace {

/// The weights of red and blue in luma.
struct Weights {
  double red = 0;
  double blue = 0;
};

Weights weightsOf(ColorMatrix matrix) {
  switch (matrix) {
    case ColorMatrix::bt601:
      return {0.299, 0.114};
    case ColorMatrix::bt709:
      return {0.2126, 0.0722};
    case ColorMatrix::bt2020:
      return {0.2627, 0.0593};
  }
  return {};
}

/// Y, Cb and Cr of a colour, on the scale of 8 bits, from the definition of the matrix.
std::array<double, 3> coded(std::array<double, 3> colour, ColorMatrix matrix, ColorRange range) {
  const auto [red, green, blue] = colour;
  const Weights weights = weightsOf(matrix);
  const double luma =
      weights.red * red + (1 - weights.red - weights.blue) * green + weights.blue * blue;
  const double cb = (blue - luma) / (2 * (1 - weights.blue));
  const double cr = (red - luma) / (2 * (1 - weights.red));
  if (range == ColorRange::full) {
    return {luma, 128 + cb, 128 + cr};
  }
  return {16 + luma * 219 / 255, 128 + cb * 224 / 255, 128 + cr * 224 / 255};
}

int halfOf(int length) {
  return (length + 1) / 2;
}

bool isHalvedAcross(PixelLayout layout) {
  return layout != PixelLayout::yuv444p8 && layout != PixelLayout::yuv444p10;
}

bool isHalvedDown(PixelLayout layout) {
  return layout == PixelLayout::yuv420p8 || layout == PixelLayout::yuv420p10;
}

/// A picture of one colour.
VideoFrame flatFrame(std::array<double, 3> colour, PixelLayout layout, ColorMatrix matrix,
                     ColorRange range, int width, int height) {
  VideoFrame frame{
      .width = width, .height = height, .layout = layout, .matrix = matrix, .range = range};
  auto planes = std::make_shared<std::array<std::vector<std::byte>, 3>>();
  const auto values = coded(colour, matrix, range);
  const int bytes = bytesPerSample(layout);
  for (std::size_t index = 0; index < 3; ++index) {
    const bool isChroma = index > 0;
    VideoPlane& plane = frame.planes.at(index);
    plane.width = isChroma && isHalvedAcross(layout) ? halfOf(width) : width;
    plane.height = isChroma && isHalvedDown(layout) ? halfOf(height) : height;
    plane.stride = std::ptrdiff_t{bytes} * plane.width + 32;
    auto& memory = planes->at(index);
    memory.resize(static_cast<std::size_t>(plane.stride * plane.height + 64));
    const auto value =
        static_cast<std::uint16_t>(std::lround(values.at(index) * (bytes == 2 ? 4 : 1)));
    for (int y = 0; y < plane.height; ++y) {
      for (int x = 0; x < plane.width; ++x) {
        std::memcpy(memory.data() + y * plane.stride + std::ptrdiff_t{x} * bytes, &value,
                    static_cast<std::size_t>(bytes));
      }
    }
    plane.data = memory.data();
  }
  frame.storage = planes;
  return frame;
}

constexpr std::array layouts{PixelLayout::yuv420p8,  PixelLayout::yuv422p8,
                             PixelLayout::yuv444p8,  PixelLayout::yuv420p10,
                             PixelLayout::yuv422p10, PixelLayout::yuv444p10};
constexpr std::array matrices{ColorMatrix::bt601, ColorMatrix::bt709, ColorMatrix::bt2020};
constexpr std::array ranges{ColorRange::limited, ColorRange::full};

TEST(RgbConversion, everyFormOfPictureKeepsItsColour) {
  const std::array<std::array<double, 3>, 5> colours{
      {{0, 0, 0}, {255, 255, 255}, {200, 40, 30}, {30, 180, 60}, {40, 60, 220}}};
  for (const auto& colour : colours) {
    for (const PixelLayout layout : layouts) {
      for (const ColorMatrix matrix : matrices) {
        for (const ColorRange range : ranges) {
          const auto picture = rgbPicture(flatFrame(colour, layout, matrix, range, 64, 36), 32, 18);
          ASSERT_TRUE(picture);
          ASSERT_EQ(picture->pixels.size(), 3U * 32 * 18);
          for (std::size_t at = 0; at < picture->pixels.size(); ++at) {
            ASSERT_NEAR(picture->pixels[at], colour.at(at % 3), 3)
                << "layout " << static_cast<int>(layout) << " matrix " << static_cast<int>(matrix)
                << " range " << static_cast<int>(range) << " byte " << at;
          }
        }
      }
    }
  }
}

TEST(RgbConversion, anySizeCanBeMadeOfAnyOther) {
  for (const auto& [width, height] : {std::pair{1, 1}, {2, 1}, {17, 5}, {640, 1}}) {
    const auto frame = flatFrame({200, 40, 30}, PixelLayout::yuv420p8, ColorMatrix::bt709,
                                 ColorRange::limited, 321, 97);
    const auto picture = rgbPicture(frame, width, height);
    ASSERT_TRUE(picture) << width << "x" << height;
    EXPECT_EQ(picture->width, width);
    EXPECT_EQ(picture->height, height);
    EXPECT_EQ(picture->pixels.size(), static_cast<std::size_t>(3 * width * height));
  }
}

}  // namespace
}  // namespace vesk::media
