#include <algorithm>
#include <array>
#include <random>

#include "compositor/CompositeScenes.h"
#include "compositor/PictureConversion.h"
#include "compositor/PictureTexture.h"
#include "compositor/ReferenceConversion.h"
#include "compositor/TestPicture.h"
#include "gpu/GpuTest.h"

namespace vesk::compositor {
namespace {

using gpu::TextureBinding;
using media::ChromaSiting;
using media::ColorMatrix;
using media::ColorRange;
using media::PixelLayout;

media::VideoFrame blank(PixelLayout layout, ColorMatrix matrix, ColorRange range) {
  return test::makePicture(
      {.width = 8, .height = 8, .layout = layout, .matrix = matrix, .range = range},
      [](int, int, int) { return 0; });
}

glm::vec3 converted(const media::VideoFrame& frame, int y, int cb, int cr) {
  const float maximum = media::bytesPerSample(frame.layout) == 1 ? 255.0F : 65535.0F;
  return pictureConversion(frame).toRgb * glm::vec4(glm::vec3(y, cb, cr) / maximum, 1);
}

void expectColor(glm::vec3 color, double red, double green, double blue, double tolerance) {
  EXPECT_NEAR(color.r, red, tolerance);
  EXPECT_NEAR(color.g, green, tolerance);
  EXPECT_NEAR(color.b, blue, tolerance);
}

TEST(PictureConversion, blackAndWhiteAreExactInEveryEncoding) {
  for (const ColorMatrix matrix : {ColorMatrix::bt601, ColorMatrix::bt709, ColorMatrix::bt2020}) {
    const auto limited8 = blank(PixelLayout::yuv420p8, matrix, ColorRange::limited);
    expectColor(converted(limited8, 16, 128, 128), 0, 0, 0, 1e-5);
    expectColor(converted(limited8, 235, 128, 128), 1, 1, 1, 1e-5);
    const auto full8 = blank(PixelLayout::yuv420p8, matrix, ColorRange::full);
    expectColor(converted(full8, 0, 128, 128), 0, 0, 0, 1e-5);
    expectColor(converted(full8, 255, 128, 128), 1, 1, 1, 1e-5);
    const auto limited10 = blank(PixelLayout::yuv420p10, matrix, ColorRange::limited);
    expectColor(converted(limited10, 64, 512, 512), 0, 0, 0, 1e-4);
    expectColor(converted(limited10, 940, 512, 512), 1, 1, 1, 1e-4);
    const auto full10 = blank(PixelLayout::yuv420p10, matrix, ColorRange::full);
    expectColor(converted(full10, 1023, 512, 512), 1, 1, 1, 1e-4);
  }
}

// The codes of the primaries as the recommendations' tables of colour bars give them.
TEST(PictureConversion, primariesComeBackFromTheirCodes) {
  const auto bt709 = blank(PixelLayout::yuv420p8, ColorMatrix::bt709, ColorRange::limited);
  expectColor(converted(bt709, 63, 102, 240), 1, 0, 0, 0.01);
  expectColor(converted(bt709, 173, 42, 26), 0, 1, 0, 0.01);
  expectColor(converted(bt709, 32, 240, 118), 0, 0, 1, 0.01);
  const auto bt601 = blank(PixelLayout::yuv420p8, ColorMatrix::bt601, ColorRange::limited);
  expectColor(converted(bt601, 81, 90, 240), 1, 0, 0, 0.01);
  expectColor(converted(bt601, 145, 54, 34), 0, 1, 0, 0.01);
  expectColor(converted(bt601, 41, 240, 110), 0, 0, 1, 0.01);
}

class PictureTextureTest : public gpu::test::GpuTest {
 protected:
  void SetUp() override {
    GpuTest::SetUp();
    uniforms_.emplace();
  }
  void TearDown() override {
    uniforms_.reset();
    GpuTest::TearDown();
  }

  gpu::PixelRect show(PictureTexture& picture, const media::VideoFrame& frame) {
    return take(picture.show(device(), frame, *uniforms_));
  }
  static test::DoubleImage image(PictureTexture& picture) {
    return test::canvasImage(
        take(gpu::Framebuffer::create(picture.texture(TextureBinding::Levels::first))));
  }

 private:
  std::optional<gpu::UniformBuffers> uniforms_;
};

struct Difference {
  double mean = 0;  ///< in steps of eight bits, like the other
  double worst = 0;
};

Difference difference(const test::DoubleImage& a, const test::DoubleImage& b) {
  Difference result;
  for (std::size_t index = 0; index < a.pixels.size(); ++index) {
    const glm::dvec4 apart = glm::abs(a.pixels[index] - b.pixels[index]) * 255.0;
    result.worst = std::max({result.worst, apart.r, apart.g, apart.b, apart.a});
    result.mean += (apart.r + apart.g + apart.b) / 3 / static_cast<double>(a.pixels.size());
  }
  return result;
}

// Filtering between chroma samples in eight bits is off by up to one step, which the equations
// double for blue.
void expectAlike(const test::DoubleImage& image, const test::DoubleImage& reference) {
  constexpr double rounding = 1e-6;  // of the subtraction
  const Difference apart = difference(image, reference);
  EXPECT_LE(apart.worst, 3 + rounding);
  EXPECT_LE(apart.mean, 0.8);
}

constexpr std::array layouts{PixelLayout::yuv420p8,  PixelLayout::yuv422p8,
                             PixelLayout::yuv444p8,  PixelLayout::yuv420p10,
                             PixelLayout::yuv422p10, PixelLayout::yuv444p10};
constexpr std::array matrices{ColorMatrix::bt601, ColorMatrix::bt709, ColorMatrix::bt2020};
constexpr std::array ranges{ColorRange::limited, ColorRange::full};
constexpr std::array sitings{ChromaSiting::left, ChromaSiting::centre, ChromaSiting::topLeft};

/// Slopes of luma and chroma that run through all colours; odd sizes leave a half chroma sample.
media::VideoFrame slopes(const test::PictureFormat& format) {
  const int scale = 1 << (media::bitsPerSample(format.layout) - 8);
  return test::makePicture(format, [&](int plane, int x, int y) {
    const int chroma = 128 + (x * 7 - y * 9) % 60;
    const int value = plane == 0 ? 60 + (x + y) % 120 : plane == 1 ? chroma : 255 - chroma;
    return value * scale;
  });
}

TEST_F(PictureTextureTest, everyEncodingComesOutAsItsEquationsSay) {
  PictureTexture picture = take(PictureTexture::create());
  for (const PixelLayout layout : layouts) {
    for (const ColorMatrix matrix : matrices) {
      for (const ColorRange range : ranges) {
        for (const ChromaSiting siting : sitings) {
          const media::VideoFrame frame = slopes({.width = 37,
                                                  .height = 23,
                                                  .layout = layout,
                                                  .matrix = matrix,
                                                  .range = range,
                                                  .siting = siting});
          show(picture, frame);
          SCOPED_TRACE(::testing::Message()
                       << static_cast<int>(layout) << ' ' << static_cast<int>(matrix) << ' '
                       << static_cast<int>(range) << ' ' << static_cast<int>(siting));
          expectAlike(image(picture), test::decoded(frame));
        }
      }
    }
  }
}

TEST_F(PictureTextureTest, whereChromaIsSitedShows) {
  // Otherwise the test above could not tell the sitings apart.
  const test::PictureFormat format{
      .width = 36, .height = 24, .layout = PixelLayout::yuv420p8, .siting = ChromaSiting::left};
  test::PictureFormat other = format;
  other.siting = ChromaSiting::centre;
  const Difference apart = difference(test::decoded(slopes(format)), test::decoded(slopes(other)));
  EXPECT_GT(apart.worst, 6);
  EXPECT_GT(apart.mean, 1);
}

TEST_F(PictureTextureTest, isEmptyUntilAPictureIsShown) {
  PictureTexture picture = take(PictureTexture::create());
  EXPECT_TRUE(picture.isEmpty());
  EXPECT_EQ(picture.width(), 0);
  const media::VideoFrame frame = slopes({.width = 36, .height = 24});
  EXPECT_EQ(show(picture, frame), (gpu::PixelRect{0, 0, 36, 24}));
  EXPECT_FALSE(picture.isEmpty());
  EXPECT_EQ(picture.width(), 36);
  EXPECT_EQ(picture.height(), 24);
  picture.clear();
  EXPECT_TRUE(picture.isEmpty());
}

TEST_F(PictureTextureTest, theSamePictureAgainIsNoChange) {
  PictureTexture picture = take(PictureTexture::create());
  const media::VideoFrame frame = slopes({.width = 36, .height = 24});
  show(picture, frame);
  EXPECT_TRUE(show(picture, frame).isEmpty());
}

TEST_F(PictureTextureTest, afterClearingEverythingIsNew) {
  PictureTexture picture = take(PictureTexture::create());
  const media::VideoFrame frame = slopes({.width = 36, .height = 24});
  show(picture, frame);
  picture.clear();
  EXPECT_EQ(show(picture, frame), (gpu::PixelRect{0, 0, 36, 24}));
}

TEST_F(PictureTextureTest, bringingUpAPartGivesThePictureBroughtUpWhole) {
  std::mt19937 random(11);
  for (const PixelLayout layout : layouts) {
    PictureTexture kept = take(PictureTexture::create());
    media::VideoFrame frame =
        slopes({.width = 131, .height = 77, .layout = layout, .siting = ChromaSiting::centre});
    show(kept, frame);
    for (int round = 0; round < 6; ++round) {
      const auto left = static_cast<int>(random() % 60);
      const auto top = static_cast<int>(random() % 30);
      const auto value = static_cast<int>(random() % 250);
      frame = test::withSamples(frame, [&](int, int x, int y) {
        return x >= left && x < left + 9 && y >= top && y < top + 5 ? value : -1;
      });
      show(kept, frame);
      PictureTexture fresh = take(PictureTexture::create());
      show(fresh, frame);
      ASSERT_EQ(image(kept).pixels, image(fresh).pixels) << static_cast<int>(layout);
    }
  }
}

TEST_F(PictureTextureTest, aPictureOfAnotherSizeOrKindTakesItsPlace) {
  PictureTexture picture = take(PictureTexture::create());
  show(picture, slopes({.width = 36, .height = 24}));
  for (const test::PictureFormat& format :
       {test::PictureFormat{.width = 50, .height = 20},
        test::PictureFormat{.width = 50, .height = 20, .layout = PixelLayout::yuv420p10}}) {
    const media::VideoFrame next = slopes(format);
    EXPECT_EQ(show(picture, next), (gpu::PixelRect{0, 0, 50, 20}));
    expectAlike(image(picture), test::decoded(next));
  }
}

TEST_F(PictureTextureTest, aPictureTooLargeIsRefused) {
  PictureTexture picture = take(PictureTexture::create());
  const int tooWide = device().capabilities().maxTextureSize + 1;
  const media::VideoFrame frame =
      test::makePicture({.width = tooWide, .height = 1}, [](int, int, int) { return 0; });
  gpu::UniformBuffers uniforms;
  EXPECT_FALSE(picture.show(device(), frame, uniforms).has_value());
}

}  // namespace
}  // namespace vesk::compositor
