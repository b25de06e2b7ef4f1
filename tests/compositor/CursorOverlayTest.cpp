#include <gtest/gtest.h>

#include "compositor/CompositeScenes.h"
#include "compositor/CursorOverlay.h"

namespace vesk::compositor {
namespace {

using test::clickAt;
using test::moveTo;

constexpr double aspect = 16.0 / 9.0;

struct Stage {
  package::CursorSettings settings;
  package::RecordingProject project =
      test::makeProject(1920, 1080, {moveTo(0, 0.3, 0.4), moveTo(9, 0.3, 0.4)});
  motion::CameraPose pose;
  ContentRect rect;

  std::optional<CursorUniforms> at(double time) const {
    const auto matrix = frameMatrix(&project.meta, pose, rect, aspect);
    return cursorUniforms(settings, project.meta, motion::CursorTrack(project), matrix.value(),
                          pose.framing, time, rect);
  }
};

TEST(ClickShrink, pressesInAndSpringsBack) {
  EXPECT_EQ(clickShrinkFactor(-0.001, 0.12), 1);
  EXPECT_EQ(clickShrinkFactor(0, 0.12), 1);
  EXPECT_NEAR(clickShrinkFactor(0.05, 0.12), 1 - 0.12 * 0.25, 1e-12);
  EXPECT_NEAR(clickShrinkFactor(0.1, 0.12), 1 - 0.12, 1e-12);
  EXPECT_NEAR(clickShrinkFactor(0.21, 0.12), 1 - 0.12 * 0.25, 1e-12);
  EXPECT_EQ(clickShrinkFactor(0.32, 0.12), 1);
  EXPECT_EQ(clickShrinkFactor(5, 0.12), 1);
}

TEST(ClickShrink, anAmountOfZeroChangesNothingAtAnyAge) {
  for (double age = -0.1; age < 0.5; age += 0.01) EXPECT_EQ(clickShrinkFactor(age, 0), 1);
}

TEST(ClickShrink, hasNoJumps) {
  double before = clickShrinkFactor(-0.001, 0.5);
  for (double age = 0; age < 0.4; age += 0.001) {
    const double now = clickShrinkFactor(age, 0.5);
    EXPECT_NEAR(now, before, 0.011) << age;
    before = now;
  }
}

TEST(CursorOverlay, standsWithItsHotSpotOnTheRecordedPlace) {
  const auto cursor = Stage().at(1);
  ASSERT_TRUE(cursor.has_value());
  EXPECT_NEAR(cursor->origin.x + cursor->size.x * 1.6 / 20, 0.3, 1e-5);
  EXPECT_NEAR(cursor->origin.y + cursor->size.y * 1.68 / 28, 0.4, 1e-5);
  EXPECT_EQ(cursor->opacity, 1);
}

TEST(CursorOverlay, hasItsPointSizeOnTheRecordedScreen) {
  Stage stage;
  stage.settings.scale = 1;
  const auto cursor = stage.at(1);
  EXPECT_NEAR(cursor->size.x, 20.0 / 1920, 1e-7);
  EXPECT_NEAR(cursor->size.y, 28.0 / 1080, 1e-7);
}

TEST(CursorOverlay, aScreenOfTwoPixelsAPointDoublesIt) {
  Stage stage;
  const glm::vec2 single = stage.at(1)->size;
  stage.project.meta.scaleFactor = 2;
  EXPECT_FLOAT_EQ(stage.at(1)->size.x, 2 * single.x);
  EXPECT_FLOAT_EQ(stage.at(1)->size.y, 2 * single.y);
  stage.project.meta.scaleFactor = 0.5;  // counts as 1
  EXPECT_EQ(stage.at(1)->size, single);
}

TEST(CursorOverlay, growsWithTheZoomAndFollowsThePicture) {
  Stage stage;
  const glm::vec2 single = stage.at(1)->size;
  stage.pose = test::flatPose(2, {0.3F, 0.4F});
  stage.settings.style = package::CursorStyle::dot;
  const auto cursor = stage.at(1);
  EXPECT_FLOAT_EQ(cursor->size.y, 2 * single.y * 26 / 28);
  EXPECT_NEAR(cursor->origin.x + cursor->size.x / 2, 0.5, 1e-5);
}

TEST(CursorOverlay, anUnknownCaptureSizeCountsAsFullHd) {
  Stage stage;
  const glm::vec2 known = stage.at(1)->size;
  stage.project.meta.captureHeight = 0;
  EXPECT_EQ(stage.at(1)->size, known);
}

TEST(CursorOverlay, shrinksAfterAClick) {
  Stage stage;
  const glm::vec2 single = stage.at(1)->size;
  stage.project = test::makeProject(
      1920, 1080, {moveTo(0, 0.3, 0.4), clickAt(2, 0.3, 0.4), moveTo(9, 0.3, 0.4)});
  EXPECT_EQ(stage.at(1)->size, single) << "before the first click";
  EXPECT_FLOAT_EQ(stage.at(2.1)->size.x, 0.88F * single.x);
  EXPECT_EQ(stage.at(2.5)->size, single);
}

TEST(CursorOverlay, theLatestClickCounts) {
  Stage stage;
  const glm::vec2 single = stage.at(1)->size;
  stage.project = test::makeProject(
      1920, 1080,
      {moveTo(0, 0.3, 0.4), clickAt(2, 0.3, 0.4), clickAt(2.05, 0.3, 0.4), moveTo(9, 0.3, 0.4)});
  EXPECT_FLOAT_EQ(stage.at(2.1)->size.x, (1 - 0.12F * 0.25F) * single.x);
}

TEST(CursorOverlay, isAbsentWhenHiddenOrUnknown) {
  Stage stage;
  stage.settings.visible = false;
  EXPECT_FALSE(stage.at(1).has_value());
  stage.settings.visible = true;
  stage.project = test::makeProject(1920, 1080);  // no sample
  EXPECT_FALSE(stage.at(1).has_value());
}

TEST(CursorOverlay, isAbsentBehindTheCamera) {
  glm::mat4 matrix(1);
  matrix[3].w = -1;
  const Stage stage;
  EXPECT_FALSE(cursorUniforms(stage.settings, stage.project.meta,
                              motion::CursorTrack(stage.project), matrix, 1, 1, stage.rect)
                   .has_value());
}

}  // namespace
}  // namespace vesk::compositor
