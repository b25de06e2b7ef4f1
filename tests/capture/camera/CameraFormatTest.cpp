#include <gtest/gtest.h>

#include <array>

#include "capture/camera/CameraFormat.h"

namespace vesk::capture::camera {
namespace {

constexpr PixelSize hd{1280, 720};

TEST(CameraFormat, isTheOneOfTheSizeClosestToTheOneWanted) {
  const std::array formats{CameraFormat{PixelLayout::bgrx, {640, 480}, 30},
                           CameraFormat{PixelLayout::bgrx, {1280, 800}, 30},
                           CameraFormat{PixelLayout::bgrx, {1920, 1080}, 30}};
  EXPECT_EQ(bestFormat(formats, hd), formats[1]);
}

TEST(CameraFormat, ofTwoOfOneSizeIsTheOneThatIsFastEnough) {
  const std::array formats{CameraFormat{PixelLayout::yuy2, hd, 10},
                           CameraFormat{PixelLayout::mjpeg, hd, 30}};
  EXPECT_EQ(bestFormat(formats, hd), formats[1]);
}

TEST(CameraFormat, ofTwoThatAreFastEnoughIsTheOneThatCostsLessToRead) {
  const std::array formats{CameraFormat{PixelLayout::mjpeg, hd, 60},
                           CameraFormat{PixelLayout::yuy2, hd, 30}};
  EXPECT_EQ(bestFormat(formats, hd), formats[1]);
}

TEST(CameraFormat, isNothingOfNothing) {
  EXPECT_EQ(bestFormat({}, hd), std::nullopt);
}

TEST(CameraFormat, isNoneWithoutASensibleSize) {
  const std::array formats{CameraFormat{PixelLayout::bgrx, {0, 720}, 30},
                           CameraFormat{PixelLayout::bgrx, {1280, -720}, 30},
                           CameraFormat{PixelLayout::bgrx, {100'000, 720}, 30}};
  EXPECT_EQ(bestFormat(formats, hd), std::nullopt);
}

TEST(CameraFormat, ofARangeOfSizesHasTheClosestOnItsSteps) {
  EXPECT_EQ(closestSize({{16, 16}, {1920, 1080}, {16, 16}}, hd), hd);
  EXPECT_EQ(closestSize({{0, 0}, {1920, 1080}, {100, 100}}, hd), (PixelSize{1200, 700}));
  EXPECT_EQ(closestSize({{16, 16}, {640, 480}, {1, 1}}, hd), (PixelSize{640, 480}));
  EXPECT_EQ(closestSize({{1920, 1080}, {3840, 2160}, {0, 0}}, hd), (PixelSize{1920, 1080}));
  EXPECT_EQ(closestSize({{640, 480}, {16, 16}, {1, 1}}, hd), (PixelSize{640, 480}))
      << "a range that ends before it begins";
}

TEST(CameraFormat, asksForThirtyFramesASecondAtMost) {
  EXPECT_EQ(frameRateOf({.framesPerSecond = 60}), 30);
  EXPECT_EQ(frameRateOf({.framesPerSecond = 24}), 24);
  EXPECT_EQ(frameRateOf({.framesPerSecond = 0.5}), 1);
  EXPECT_EQ(frameRateOf({.framesPerSecond = 0}), 30) << "not known";
}

}  // namespace
}  // namespace vesk::capture::camera
