#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <random>
#include <vector>

#include "media/PictureConverter.h"
#include "media/RowPairConversion.h"

namespace vesk::media {
namespace {

/// A picture of random pixels in rows with some bytes to spare.
class RandomPicture {
 public:
  RandomPicture(int width, int height, unsigned seed)
      : width_(width), height_(height), stride_(4 * width + 12) {
    std::mt19937 random(seed);
    bytes_.resize(static_cast<std::size_t>(stride_ * height));
    std::ranges::generate(bytes_, [&] { return static_cast<std::uint8_t>(random()); });
  }

  [[nodiscard]] BgraView view() const { return {bytes_.data(), stride_, width_, height_}; }
  void fill(int x, int y, std::array<std::uint8_t, 4> bgra) {
    std::ranges::copy(bgra, bytes_.begin() + y * stride_ + std::ptrdiff_t{4} * x);
  }

 private:
  int width_;
  int height_;
  std::ptrdiff_t stride_;
  std::vector<std::uint8_t> bytes_;
};

struct Rgb {
  double red = 0;
  double green = 0;
  double blue = 0;
};

Rgb pixelAt(const BgraView& view, int x, int y) {
  const std::uint8_t* pixel = view.data + y * view.stride + std::ptrdiff_t{4} * x;
  return {pixel[2] / 255.0, pixel[1] / 255.0, pixel[0] / 255.0};
}

Rgb blockMean(const BgraView& view, int x, int y) {
  Rgb mean;
  for (int dy = 0; dy < 2; ++dy) {
    for (int dx = 0; dx < 2; ++dx) {
      const Rgb pixel = pixelAt(view, x + dx, y + dy);
      mean.red += pixel.red / 4;
      mean.green += pixel.green / 4;
      mean.blue += pixel.blue / 4;
    }
  }
  return mean;
}

double lumaOf(const Rgb& rgb) {
  return 0.2126 * rgb.red + 0.7152 * rgb.green + 0.0722 * rgb.blue;
}

int sample(const I420Picture& picture, std::size_t plane, int x, int y) {
  const auto& samples = picture.planes()[plane];
  return samples.data[y * samples.stride + x];
}

/// Half a step of rounding and the error of the fixed-point weights.
constexpr double tolerance = 0.52;

void expectExact(const BgraView& view, const I420Picture& picture) {
  double worst = 0;
  for (int y = 0; y < view.height; ++y) {
    for (int x = 0; x < view.width; ++x) {
      const double luma = 16 + 219 * lumaOf(pixelAt(view, x, y));
      worst = std::max(worst, std::abs(sample(picture, 0, x, y) - luma));
    }
  }
  for (int y = 0; y < view.height; y += 2) {
    for (int x = 0; x < view.width; x += 2) {
      const Rgb mean = blockMean(view, x, y);
      const double cb = 128 + 224 * (mean.blue - lumaOf(mean)) / 1.8556;
      const double cr = 128 + 224 * (mean.red - lumaOf(mean)) / 1.5748;
      worst = std::max(worst, std::abs(sample(picture, 1, x / 2, y / 2) - cb));
      worst = std::max(worst, std::abs(sample(picture, 2, x / 2, y / 2) - cr));
    }
  }
  EXPECT_LE(worst, tolerance);
}

TEST(PictureConverter, everySampleIsTheRoundedExactValue) {
  for (const int width : {2, 30, 32, 34, 126, 640}) {
    const RandomPicture source(width, 36, 11U + static_cast<unsigned>(width));
    I420Picture picture(width, 36);
    convertToI420(source.view(), picture);
    expectExact(source.view(), picture);
  }
}

TEST(PictureConverter, theCornersOfTheColourCubeAreExact) {
  RandomPicture source(16, 2, 1);
  for (int colour = 0; colour < 8; ++colour) {
    const auto channel = [&](int bit) {
      return static_cast<std::uint8_t>((colour >> bit & 1) * 255);
    };
    for (int i = 0; i < 4; ++i) {
      source.fill(2 * colour + i % 2, i / 2, {channel(0), channel(1), channel(2), 77});
    }
  }
  I420Picture picture(16, 2);
  convertToI420(source.view(), picture);
  expectExact(source.view(), picture);
  EXPECT_EQ(sample(picture, 0, 0, 0), 16);
  EXPECT_EQ(sample(picture, 0, 15, 1), 235);
}

TEST(PictureConverter, greysHaveNoColour) {
  RandomPicture source(256, 2, 1);
  for (int x = 0; x < 256; ++x) {
    const auto grey = static_cast<std::uint8_t>(x & ~1);
    source.fill(x, 0, {grey, grey, grey, 0});
    source.fill(x, 1, {grey, grey, grey, 0});
  }
  I420Picture picture(256, 2);
  convertToI420(source.view(), picture);
  for (int x = 0; x < 128; ++x) {
    EXPECT_EQ(sample(picture, 1, x, 0), 128);
    EXPECT_EQ(sample(picture, 2, x, 0), 128);
  }
}

TEST(PictureConverter, theVectorCodeGivesThePortableCodesBytes) {
  const RandomPicture source(640, 2, 5);
  I420Picture whole(640, 2);
  convertToI420(source.view(), whole);
  I420Picture portable(640, 2);
  const BgraView view = source.view();
  const auto& [luma, cb, cr] = portable.planes();
  convertRowPair(
      {view.data, view.data + view.stride, luma.data, luma.data + luma.stride, cb.data, cr.data}, 0,
      640);
  EXPECT_TRUE(std::equal(luma.data, luma.data + portable.byteCount(), whole.planes()[0].data));
}

TEST(PictureConverter, aPartIsConvertedAsInTheWholeAndTheRestStays) {
  const RandomPicture before(200, 60, 21);
  const RandomPicture after(200, 60, 22);
  const PixelRect part{34, 10, 98, 32};
  I420Picture picture(200, 60);
  I420Picture expected(200, 60);
  I420Picture whole(200, 60);
  convertToI420(before.view(), picture);
  convertToI420(before.view(), expected);
  convertToI420(after.view(), whole);
  convertToI420(after.view(), part, picture);

  for (std::size_t plane = 0; plane < 3; ++plane) {
    const int scale = plane == 0 ? 1 : 2;
    for (int y = 0; y < 60 / scale; ++y) {
      for (int x = 0; x < 200 / scale; ++x) {
        const bool inside = x * scale >= part.x && x * scale < part.x + part.width &&
                            y * scale >= part.y && y * scale < part.y + part.height;
        ASSERT_EQ(sample(picture, plane, x, y), sample(inside ? whole : expected, plane, x, y))
            << plane << " " << x << " " << y;
      }
    }
  }
}

TEST(PictureConverter, evenRectangleHoldsTheGivenOneInsideThePicture) {
  EXPECT_EQ(evenRect({3, 5, 2, 2}, 100, 80), (PixelRect{2, 4, 4, 4}));
  EXPECT_EQ(evenRect({2, 4, 4, 4}, 100, 80), (PixelRect{2, 4, 4, 4}));
  EXPECT_EQ(evenRect({-7, -3, 10, 10}, 100, 80), (PixelRect{0, 0, 4, 8}));
  EXPECT_EQ(evenRect({97, 77, 50, 50}, 100, 80), (PixelRect{96, 76, 4, 4}));
  EXPECT_EQ(evenRect({150, 10, 5, 5}, 100, 80).width, 0);
  EXPECT_EQ(evenRect({10, -20, 5, 5}, 100, 80).height, 0);
}

}  // namespace
}  // namespace vesk::media
