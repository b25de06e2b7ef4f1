#include <gtest/gtest.h>

#include "compositor/CameraOverlay.h"

namespace vesk::compositor {
namespace {

using Shape = package::PiPSettings::Shape;

TEST(CameraOverlay, aCircleIsRoundOnEveryCanvas) {
  for (const auto& [width, height] : {std::pair{1920, 1080}, {1000, 1000}, {600, 1400}}) {
    const PiPUniforms window = pipUniforms({.shape = Shape::circle}, 4.0 / 3, width, height);
    EXPECT_NEAR(window.halfSize.x * width, window.halfSize.y * height, 1e-3);
    EXPECT_EQ(window.cornerRadius, 0.5F);
  }
}

TEST(CameraOverlay, aRoundedWindowHasTheCamerasAspect) {
  const PiPUniforms window =
      pipUniforms({.shape = Shape::rounded, .cornerRadius = 0.2}, 4.0 / 3, 1920, 1080);
  EXPECT_NEAR(window.halfSize.x * 1920 / (window.halfSize.y * 1080), 4.0 / 3, 1e-5);
  EXPECT_FLOAT_EQ(window.cornerRadius, 0.2F);
}

TEST(CameraOverlay, theSizeIsTheWindowsShareOfTheCanvasHeight) {
  EXPECT_FLOAT_EQ(pipUniforms({.size = 0.3}, 1, 1920, 1080).halfSize.y, 0.15F);
}

TEST(CameraOverlay, carriesTheSettings) {
  const PiPUniforms window = pipUniforms(
      {.center = {0.2F, 0.3F}, .border = 0.01, .shadow = 0.4, .mirrored = false}, 1.5, 1600, 800);
  EXPECT_EQ(window.center, glm::vec2(0.2F, 0.3F));
  EXPECT_FLOAT_EQ(window.border, 0.01F);
  EXPECT_FLOAT_EQ(window.shadow, 0.4F);
  EXPECT_EQ(window.mirrored, 0);
  EXPECT_EQ(window.aspect, 2);
  EXPECT_EQ(window.camAspect, 1.5F);
  EXPECT_EQ(pipUniforms({}, 1.5, 1600, 800).mirrored, 1);
}

TEST(CameraOverlay, aPictureWithoutHeightCountsAsWide) {
  EXPECT_DOUBLE_EQ(cameraAspect(640, 0), 16.0 / 9);
  EXPECT_DOUBLE_EQ(cameraAspect(640, 480), 4.0 / 3);
}

TEST(CameraOverlay, aCanvasWithoutHeightIsNoFault) {
  EXPECT_EQ(pipUniforms({}, 1.5, 100, 0).aspect, 100);
}

}  // namespace
}  // namespace vesk::compositor
