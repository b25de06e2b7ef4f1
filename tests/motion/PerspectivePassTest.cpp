#include <gtest/gtest.h>

#include <cmath>

#include "motion/CameraTrack.h"
#include "motion/PerspectivePass.h"

namespace vesk::motion {
namespace {

const package::Camera3DSettings settings{
    .enabled = true, .fov = 28, .yaw = -12, .pitch = 6, .roll = -3};

CameraPose poseAt(glm::vec2 target, double framing) {
  CameraPose pose;
  pose.target = target;
  pose.framing = framing;
  return pose;
}

CameraPose steady(glm::vec2 target, double framing) {
  return tiltCamera(std::vector(30, poseAt(target, framing)), settings)[15];
}

TEST(PerspectivePass, theSideFollowsThePointAndTheSettingsGiveTheMagnitude) {
  EXPECT_NEAR(steady({0.9F, 0.9F}, 2).yaw, 12, 1e-9);
  EXPECT_NEAR(steady({0.1F, 0.9F}, 2).yaw, -12, 1e-9);
  EXPECT_NEAR(steady({0.9F, 0.9F}, 2).pitch, 6, 1e-9);
  EXPECT_NEAR(steady({0.9F, 0.1F}, 2).pitch, -6, 1e-9);
}

TEST(PerspectivePass, rollKeepsItsSign) {
  EXPECT_NEAR(steady({0.9F, 0.9F}, 2).roll, -3, 1e-9);
}

TEST(PerspectivePass, onTheCentreLineTheCameraStandsSquare) {
  EXPECT_EQ(steady({0.5F, 0.5F}, 2).yaw, 0.0);
  EXPECT_EQ(steady({0.5F, 0.5F}, 2).pitch, 0.0);
}

TEST(PerspectivePass, theTiltGrowsWithTheZoomAndIsCompleteAtOneAndAHalf) {
  EXPECT_EQ(steady({0.9F, 0.9F}, 1).yaw, 0.0);
  EXPECT_EQ(steady({0.9F, 0.9F}, 0.5).yaw, 0.0);
  EXPECT_NEAR(steady({0.9F, 0.9F}, 1.25).yaw, 6, 1e-9);
  EXPECT_NEAR(steady({0.9F, 0.9F}, 1.5).yaw, 12, 1e-9);
  EXPECT_NEAR(steady({0.9F, 0.9F}, 4).yaw, 12, 1e-9);
}

TEST(PerspectivePass, yawTowardIsASmoothstepOverAQuarterOfThePicture) {
  EXPECT_EQ(yawToward({0.5F, 0.9F}, 12), 0.0);
  EXPECT_FALSE(std::signbit(yawToward({0.5F, 0.9F}, 12)));
  EXPECT_EQ(yawToward({0.625F, 0.5F}, 12), 6.0);
  EXPECT_EQ(yawToward({0.375F, 0.5F}, 12), -6.0);
  EXPECT_EQ(yawToward({0.375F, 0.5F}, -12), -6.0);
  EXPECT_EQ(yawToward({0.75F, 0.5F}, 12), 12.0);
  EXPECT_EQ(yawToward({1.0F, 0.5F}, 12), 12.0);
  EXPECT_EQ(yawToward({-3.0F, 0.5F}, 12), -12.0);
}

TEST(PerspectivePass, aChangeOfSideIsSpreadOverElevenSamples) {
  std::vector<CameraPose> samples(60, poseAt({0.1F, 0.5F}, 2));
  for (std::size_t i = 30; i < 60; ++i) {
    samples[i].target.x = 0.9F;
  }
  const auto tilted = tiltCamera(samples, settings);
  EXPECT_NEAR(tilted[24].yaw, -12, 1e-9);
  EXPECT_GT(tilted[25].yaw, -12 + 1e-9);
  EXPECT_LT(tilted[34].yaw, 12 - 1e-9);
  EXPECT_NEAR(tilted[35].yaw, 12, 1e-9);
  EXPECT_NEAR(tilted[30].yaw, 12 * (6 + 15 - 15) / 36.0, 1e-9);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    EXPECT_EQ(tilted[i].target, samples[i].target);
    EXPECT_EQ(tilted[i].framing, samples[i].framing);
  }
}

}  // namespace
}  // namespace vesk::motion
