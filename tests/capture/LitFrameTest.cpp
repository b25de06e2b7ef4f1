#include <gtest/gtest.h>

#include "capture/LitFrame.h"
#include "capture/fake/FakePicture.h"

namespace vesk::capture {
namespace {

constexpr PixelSize size{.width = 20, .height = 16};
constexpr std::uint32_t green8 = 0x000800;
constexpr std::uint32_t green7 = 0x000700;

TEST(LitFrame, aMeanOfEightIsLit) {
  EXPECT_TRUE(isLit(fake::FakePicture(size, green8).view()));
}

TEST(LitFrame, aSumOfOneLessIsNotLit) {
  fake::FakePicture picture{size, green8};
  picture.fill({.x = 3, .y = 4, .width = 1, .height = 1}, green7);
  EXPECT_FALSE(isLit(picture.view()));
}

TEST(LitFrame, onlyGreenCounts) {
  EXPECT_FALSE(isLit(fake::FakePicture(size, 0xFF00FF).view()));
}

TEST(LitFrame, aPictureWithoutPixelsCountsAsLit) {
  EXPECT_TRUE(isLit({}));
}

TEST(LitFrame, picturesOfAnySizeAreSampledWithinTheirBounds) {
  for (const int side : {1, 3, 15, 17, 21, 720}) {
    const PixelSize square{.width = side, .height = side};
    EXPECT_TRUE(isLit(fake::FakePicture(square, 0xFFFFFF).view()));
    EXPECT_FALSE(isLit(fake::FakePicture(square, 0).view()));
  }
}

}  // namespace
}  // namespace vesk::capture
