#include <gtest/gtest.h>

#include "compositor/CompositeScenes.h"
#include "compositor/RippleOverlay.h"

namespace vesk::compositor {
namespace {

using test::clickAt;

constexpr double aspect = 16.0 / 9.0;

struct Stage {
  package::RippleSettings settings;
  std::vector<package::RecordedEvent> clicks{clickAt(1.0, 0.25, 0.75)};
  motion::CameraPose pose;
  ContentRect rect;

  std::vector<RippleInstance> at(double time) const {
    const package::RecordingProject project = test::makeProject(1920, 1080);
    const auto matrix = frameMatrix(&project.meta, pose, rect, aspect);
    return rippleInstances(settings, clicks, matrix.value(), pose.framing, time, rect, aspect);
  }
};

TEST(RippleOverlay, aClickAtThisVeryMomentStartsARipple) {
  const auto ripples = Stage().at(1.0);
  ASSERT_EQ(ripples.size(), 1U);
  EXPECT_EQ(ripples[0].progress, 0);
}

TEST(RippleOverlay, itEndsWithTheDurationIncluded) {
  const auto atTheEnd = Stage().at(1.25);
  ASSERT_EQ(atTheEnd.size(), 1U);
  EXPECT_EQ(atTheEnd[0].progress, 1);
  EXPECT_TRUE(Stage().at(1.2500001).empty());
  EXPECT_TRUE(Stage().at(0.9999999).empty());
}

TEST(RippleOverlay, shorterThanThreeFramesCountsAsThat) {
  Stage stage;
  stage.settings.duration = 0.05;
  const auto ripples = stage.at(1.075);
  ASSERT_EQ(ripples.size(), 1U);
  EXPECT_NEAR(ripples[0].progress, 0.5, 1e-6);
  EXPECT_EQ(stage.at(1.149).size(), 1U);
  EXPECT_TRUE(stage.at(1.1501).empty());
}

TEST(RippleOverlay, ofManyClicksTheFirstTwentyFourShow) {
  Stage stage;
  stage.clicks.clear();
  for (int index = 0; index < 30; ++index) {
    stage.clicks.push_back(clickAt(1 + index * 0.001, index / 30.0, 0.5));
  }
  const auto ripples = stage.at(1.1);
  ASSERT_EQ(ripples.size(), maxRipples);
  for (std::size_t index = 0; index < ripples.size(); ++index) {
    EXPECT_NEAR(ripples[index].center.x, static_cast<double>(index) / 30, 1e-5);
  }
}

TEST(RippleOverlay, onlyTheClicksOfTheMomentTakePart) {
  Stage stage;
  stage.clicks = {clickAt(0.2, 0.1, 0.5), clickAt(1.0, 0.2, 0.5), clickAt(1.1, 0.3, 0.5),
                  clickAt(1.5, 0.4, 0.5)};
  const auto ripples = stage.at(1.2);
  ASSERT_EQ(ripples.size(), 2U);
  EXPECT_NEAR(ripples[0].center.x, 0.2, 1e-5);
  EXPECT_NEAR(ripples[1].center.x, 0.3, 1e-5);
}

TEST(RippleOverlay, aClickWithoutAPlaceGivesNone) {
  Stage stage;
  stage.clicks.front().y.reset();
  EXPECT_TRUE(stage.at(1.1).empty());
  stage.clicks = {clickAt(1.0, 0.2, 0.5), clickAt(1.0, 0.3, 0.5)};
  stage.clicks.front().x.reset();
  EXPECT_EQ(stage.at(1.1).size(), 1U);
}

TEST(RippleOverlay, carriesTheSettings) {
  Stage stage;
  stage.settings = {.style = package::RippleStyle::dot,
                    .size = 0.05,
                    .duration = 0.4,
                    .color = {0.1F, 0.2F, 0.3F, 1.0F},
                    .opacity = 0.6,
                    .stroke = false};
  const RippleInstance ripple = stage.at(1.1).at(0);
  EXPECT_EQ(ripple.color, glm::vec4(0.1F, 0.2F, 0.3F, 0.6F));
  EXPECT_EQ(ripple.style, 2);
  EXPECT_EQ(ripple.stroke, 0);
  EXPECT_NEAR(ripple.progress, 0.25, 1e-6);
  EXPECT_EQ(ripple.aspect, glm::vec2(1, aspect));
  EXPECT_EQ(ripple.pad, glm::vec2(0));
}

TEST(RippleOverlay, growsWithThePictureAndTheZoom) {
  Stage stage;
  EXPECT_FLOAT_EQ(stage.at(1.1)[0].maxRadius, 0.022F);
  stage.rect = {.origin = {0.07F, 0.07F}, .size = {0.86F, 0.86F}};
  stage.pose.framing = 2;
  EXPECT_FLOAT_EQ(stage.at(1.1)[0].maxRadius, 0.022F * 0.86F * 2);
}

TEST(RippleOverlay, sticksToThePictureUnderTheCamera) {
  Stage stage;
  stage.pose = test::flatPose(2, {0.3F, 0.7F});
  const glm::vec2 center = stage.at(1.1)[0].center;
  EXPECT_NEAR(center.x, 0.5 + 2 * (0.25 - 0.3), 1e-5);
  EXPECT_NEAR(center.y, 0.5 + 2 * (0.75 - 0.7), 1e-5);
}

}  // namespace
}  // namespace vesk::compositor
