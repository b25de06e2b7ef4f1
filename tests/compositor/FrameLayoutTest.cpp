#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "compositor/FrameLayout.h"

namespace vesk::compositor {
namespace {

package::RecordingMeta screen(int width, int height) {
  package::RecordingMeta meta;
  meta.captureWidth = width;
  meta.captureHeight = height;
  return meta;
}

package::FrameStyle frame(double padding) {
  return {.enabled = true, .padding = padding};
}

const ContentRect whole{};

void expectNear(const ContentRect& rect, double x, double y, double w, double h) {
  EXPECT_FLOAT_EQ(rect.origin.x, static_cast<float>(x));
  EXPECT_FLOAT_EQ(rect.origin.y, static_cast<float>(y));
  EXPECT_FLOAT_EQ(rect.size.x, static_cast<float>(w));
  EXPECT_FLOAT_EQ(rect.size.y, static_cast<float>(h));
}

TEST(ContentRect, aCanvasOfThePicturesAspectIsFilled) {
  const package::RecordingMeta meta = screen(1920, 1080);
  EXPECT_EQ(contentRect(&meta, {}, 1280, 720), whole);
}

TEST(ContentRect, theFramesPaddingIsTheSameShareOnBothAxes) {
  const package::RecordingMeta meta = screen(1920, 1080);
  expectNear(contentRect(&meta, frame(0.07), 2560, 1440), 0.07, 0.07, 0.86, 0.86);
}

TEST(ContentRect, paddingOfAFrameThatIsOffDoesNothing) {
  const package::RecordingMeta meta = screen(1920, 1080);
  package::FrameStyle style = frame(0.2);
  style.enabled = false;
  EXPECT_EQ(contentRect(&meta, style, 1920, 1080), whole);
}

TEST(ContentRect, aWiderCanvasLeavesRoomAtTheSides) {
  const package::RecordingMeta meta = screen(1000, 1000);
  expectNear(contentRect(&meta, {}, 2000, 1000), 0.25, 0, 0.5, 1);
}

TEST(ContentRect, aTallerCanvasLeavesRoomAboveAndBelow) {
  const package::RecordingMeta meta = screen(1600, 900);
  expectNear(contentRect(&meta, {}, 900, 1600), 0, (1 - 0.31640625) / 2, 1, 0.31640625);
}

TEST(ContentRect, thePictureNeverChangesItsAspect) {
  const package::RecordingMeta meta = screen(1512, 982);
  for (const auto& [width, height] :
       {std::pair{1920.0, 1080.0}, {2560.0, 1440.0}, {1080.0, 1080.0}, {1400.0, 600.0}}) {
    for (const package::FrameStyle& style : {package::FrameStyle{}, frame(0.07)}) {
      const ContentRect rect = contentRect(&meta, style, width, height);
      const double aspect = rect.size.x * width / (rect.size.y * height);
      EXPECT_NEAR(aspect / videoAspect(&meta), 1, 1e-6);
    }
  }
}

TEST(ContentRect, withoutARecordingOrAnAreaItIsTheWholeCanvas) {
  const package::RecordingMeta meta = screen(1000, 1000);
  EXPECT_EQ(contentRect(nullptr, frame(0.07), 2000, 1000), whole);
  EXPECT_EQ(contentRect(&meta, frame(0.07), 0, 1000), whole);
  EXPECT_EQ(contentRect(&meta, frame(0.07), 1000, 0), whole);
  EXPECT_EQ(contentRect(&meta, frame(0.07), -5, 1000), whole);
  EXPECT_EQ(contentRect(&meta, {}, std::numeric_limits<double>::quiet_NaN(), 1000), whole);
}

TEST(ContentRect, aCanvasOnePixelWideIsNoFault) {
  const package::RecordingMeta meta = screen(1920, 1080);
  const ContentRect rect = contentRect(&meta, {}, 1, 1080);
  EXPECT_EQ(rect.size.x, 1);
  EXPECT_GT(rect.size.y, 0);
  EXPECT_TRUE(frameMatrix(&meta, {}, rect, 1.0 / 1080).has_value());
}

TEST(VideoAspect, isSixteenToNineWhereTheHeightIsUnknown) {
  const package::RecordingMeta flat = screen(1920, 0);
  EXPECT_EQ(videoAspect(&flat), 16.0 / 9.0);
  EXPECT_EQ(videoAspect(nullptr), 16.0 / 9.0);
  const package::RecordingMeta meta = screen(300, 200);
  EXPECT_EQ(videoAspect(&meta), 1.5);
}

// Canvas fraction of a point of the picture.
glm::dvec2 placed(const glm::mat4& matrix, double u, double v) {
  const glm::dvec4 clip = glm::dmat4(matrix) * glm::dvec4(u - 0.5, 0.5 - v, 0, 1);
  return {(clip.x / clip.w + 1) / 2, (1 - clip.y / clip.w) / 2};
}

TEST(FrameMatrix, aStraightPoseFillsTheContentRectangleExactly) {
  for (const auto& [width, height] : {std::pair{1920, 1080}, {1512, 982}, {900, 1600}}) {
    const package::RecordingMeta meta = screen(width, height);
    for (const package::FrameStyle& style : {package::FrameStyle{}, frame(0.07)}) {
      for (const double canvasAspect : {16.0 / 9.0, 1.0, 0.6}) {
        const ContentRect rect = contentRect(&meta, style, canvasAspect * 1000, 1000);
        const auto matrix = frameMatrix(&meta, {}, rect, canvasAspect);
        ASSERT_TRUE(matrix.has_value());
        const glm::dvec2 topLeft = placed(*matrix, 0, 0);
        const glm::dvec2 bottomRight = placed(*matrix, 1, 1);
        EXPECT_NEAR(topLeft.x, rect.origin.x, 1e-6);
        EXPECT_NEAR(topLeft.y, rect.origin.y, 1e-6);
        EXPECT_NEAR(bottomRight.x, rect.origin.x + rect.size.x, 1e-6);
        EXPECT_NEAR(bottomRight.y, rect.origin.y + rect.size.y, 1e-6);
      }
    }
  }
}

TEST(FrameMatrix, zoomingShowsTheTargetInTheMiddle) {
  const package::RecordingMeta meta = screen(1920, 1080);
  motion::CameraPose pose;
  pose.target = {0.4F, 0.55F};
  pose.framing = 2;
  const auto matrix = frameMatrix(&meta, pose, whole, 16.0 / 9.0);
  ASSERT_TRUE(matrix.has_value());
  const glm::dvec2 middle = placed(*matrix, 0.4, 0.55);
  EXPECT_NEAR(middle.x, 0.5, 1e-6);
  EXPECT_NEAR(middle.y, 0.5, 1e-6);
  const glm::dvec2 corner = placed(*matrix, 0.15, 0.3);
  EXPECT_NEAR(corner.x, 0, 1e-5);
  EXPECT_NEAR(corner.y, 0, 1e-5);
}

TEST(FrameMatrix, aTiltedPictureStillCoversItsRectangle) {
  const package::RecordingMeta meta = screen(1920, 1080);
  motion::CameraPose pose;
  pose.yaw = 25;
  pose.pitch = -12;
  const ContentRect rect = contentRect(&meta, frame(0.07), 1920, 1080);
  const auto matrix = frameMatrix(&meta, pose, rect, 16.0 / 9.0);
  ASSERT_TRUE(matrix.has_value());
  EXPECT_LT(placed(*matrix, 0, 0).x, rect.origin.x + 1e-4);
  EXPECT_LT(placed(*matrix, 0, 0).y, rect.origin.y + 1e-4);
  EXPECT_GT(placed(*matrix, 1, 1).x, rect.origin.x + rect.size.x - 1e-4);
  EXPECT_GT(placed(*matrix, 1, 1).y, rect.origin.y + rect.size.y - 1e-4);
}

TEST(FrameMatrix, worksWithoutARecording) {
  EXPECT_TRUE(frameMatrix(nullptr, {}, whole, 16.0 / 9.0).has_value());
}

TEST(FrameMatrix, isAbsentForAPictureWithoutWidth) {
  const package::RecordingMeta meta = screen(0, 1080);
  const ContentRect rect = contentRect(&meta, {}, 1920, 1080);
  EXPECT_FALSE(frameMatrix(&meta, {}, rect, 16.0 / 9.0).has_value());
}

TEST(FrameMatrix, isAbsentWhereNoCameraFillsTheRectangle) {
  const package::RecordingMeta meta = screen(32768, 1);
  const ContentRect rect = contentRect(&meta, {}, 10, 1080);
  motion::CameraPose pose;
  pose.yaw = 45;
  pose.pitch = 35;
  EXPECT_FALSE(frameMatrix(&meta, pose, rect, 10.0 / 1080).has_value());
}

TEST(FrameMatrix, isAbsentForAPoseThatIsNoNumber) {
  const package::RecordingMeta meta = screen(1920, 1080);
  motion::CameraPose pose;
  pose.target.x = std::numeric_limits<float>::quiet_NaN();
  EXPECT_FALSE(frameMatrix(&meta, pose, whole, 16.0 / 9.0).has_value());
}

}  // namespace
}  // namespace vesk::compositor
