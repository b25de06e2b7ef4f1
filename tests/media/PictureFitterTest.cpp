#include <gtest/gtest.h>

#include <array>
#include <cstring>
#include <vector>

#include "media/PictureFitter.h"

namespace vesk::media {
namespace {

constexpr int blackLuma = 16;
constexpr int neutral = 128;

struct Picture {
  int width = 0;
  int height = 0;
  std::vector<std::uint8_t> bytes;

  /// All of one colour.
  Picture(int pictureWidth, int pictureHeight, std::array<std::uint8_t, 3> blueGreenRed)
      : width(pictureWidth), height(pictureHeight) {
    for (int i = 0; i < width * height; ++i) {
      bytes.insert(bytes.end(), blueGreenRed.begin(), blueGreenRed.end());
      bytes.push_back(0);
    }
  }
  [[nodiscard]] BgraView view() const {
    return {bytes.data(), std::ptrdiff_t{4} * width, width, height};
  }
};

int sampleAt(const I420Picture& picture, std::size_t plane, int x, int y) {
  const auto& samples = picture.planes()[plane];
  return samples.data[samples.stride * y + x];
}

TEST(PictureFitter, keepsTheProportions) {
  EXPECT_EQ(fittedRect(640, 480, 1280, 720), (PixelRect{160, 0, 960, 720}));
  EXPECT_EQ(fittedRect(1920, 1080, 1280, 720), (PixelRect{0, 0, 1280, 720}));
  EXPECT_EQ(fittedRect(720, 1280, 1280, 720), (PixelRect{436, 0, 406, 720}));
  EXPECT_EQ(fittedRect(2560, 720, 1280, 720), (PixelRect{0, 180, 1280, 360}));
  EXPECT_EQ(fittedRect(10'000, 1, 1280, 720), (PixelRect{0, 358, 1280, 2}));
}

TEST(PictureFitter, aPictureOfTheSameSizeIsConvertedExactly) {
  Picture source(64, 36, {30, 200, 90});
  source.bytes[400] = 255;
  I420Picture expected(64, 36);
  convertToI420(source.view(), expected);
  I420Picture fitted(64, 36);
  ASSERT_TRUE(PictureFitter().convert(source.view(), fitted));
  for (std::size_t i = 0; i < 3; ++i) {
    const auto& plane = expected.planes()[i];
    for (int y = 0; y < plane.height; ++y) {
      EXPECT_EQ(std::memcmp(plane.data + plane.stride * y,
                            fitted.planes()[i].data + fitted.planes()[i].stride * y,
                            static_cast<std::size_t>(plane.width)),
                0);
    }
  }
}

TEST(PictureFitter, anotherSizeHasTheSameColours) {
  const std::array<std::array<std::uint8_t, 3>, 4> colours{
      {{0, 0, 255}, {255, 255, 255}, {200, 100, 20}, {0, 255, 0}}};
  for (const auto& colour : colours) {
    I420Picture exact(64, 36);
    convertToI420(Picture(64, 36, colour).view(), exact);
    I420Picture scaled(64, 36);
    ASSERT_TRUE(PictureFitter().convert(Picture(128, 72, colour).view(), scaled));
    for (std::size_t plane = 0; plane < 3; ++plane) {
      EXPECT_NEAR(sampleAt(scaled, plane, 10, 10), sampleAt(exact, plane, 10, 10), 1);
    }
  }
}

TEST(PictureFitter, whatThePictureDoesNotFillIsBlack) {
  PictureFitter fitter;
  I420Picture target(1280, 720);
  ASSERT_TRUE(fitter.convert(Picture(1280, 720, {255, 255, 255}).view(), target));
  ASSERT_TRUE(fitter.convert(Picture(640, 480, {255, 255, 255}).view(), target));
  EXPECT_EQ(sampleAt(target, 0, 158, 300), blackLuma);
  EXPECT_EQ(sampleAt(target, 0, 1121, 300), blackLuma);
  EXPECT_GE(sampleAt(target, 0, 161, 300), 234);
  EXPECT_GE(sampleAt(target, 0, 1118, 719), 234);
  EXPECT_EQ(sampleAt(target, 1, 10, 300), neutral);
}

TEST(PictureFitter, theSizeMayChangeFromPictureToPicture) {
  PictureFitter fitter;
  I420Picture target(128, 72);
  ASSERT_TRUE(fitter.convert(Picture(100, 200, {255, 255, 255}).view(), target));
  EXPECT_EQ(sampleAt(target, 0, 10, 36), blackLuma);
  ASSERT_TRUE(fitter.convert(Picture(200, 20, {255, 255, 255}).view(), target));
  EXPECT_GE(sampleAt(target, 0, 10, 36), 234);
  EXPECT_EQ(sampleAt(target, 0, 64, 2), blackLuma);
}

TEST(PictureFitter, aPictureWithoutASizeIsRefused) {
  I420Picture target(128, 72);
  EXPECT_FALSE(PictureFitter().convert({}, target));
}

}  // namespace
}  // namespace vesk::media
