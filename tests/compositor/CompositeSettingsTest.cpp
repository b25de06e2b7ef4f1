#include <gtest/gtest.h>

#include "compositor/CompositeSettings.h"

namespace vesk::compositor {
namespace {

motion::CameraTrack trackOf(double framing, double blur) {
  motion::CameraPose pose;
  pose.framing = framing;
  pose.motionBlur = blur;
  return {.samples = {pose, pose, pose}};
}

TEST(CompositeSettings, theTrackGovernsThePose) {
  CompositeSettings settings;
  settings.cameraTrack = trackOf(2.5, 0.7);
  EXPECT_TRUE(settings.followsTrack());
  EXPECT_EQ(settings.pose(0.01).framing, 2.5);
  EXPECT_EQ(settings.pose(0.01).motionBlur, 0.7);
}

TEST(CompositeSettings, manualZoomIgnoresTheTrackForPoseAndBlur) {
  CompositeSettings settings;
  settings.cameraTrack = trackOf(2.5, 0.7);
  settings.manualZoom = true;
  settings.zoomLevel = 1.5;
  settings.zoomCenter = {0.25F, 0.75F};
  EXPECT_FALSE(settings.followsTrack());
  const motion::CameraPose pose = settings.pose(0.01);
  EXPECT_EQ(pose.framing, 1.5);
  EXPECT_EQ(pose.target, glm::vec2(0.25F, 0.75F));
  EXPECT_EQ(pose.motionBlur, 0);
}

TEST(CompositeSettings, withoutATrackTheManualZoomApplies) {
  CompositeSettings settings;
  settings.zoomLevel = 3;
  EXPECT_EQ(settings.pose(5).framing, 3);
  settings.cameraTrack = motion::CameraTrack{};  // without samples
  EXPECT_FALSE(settings.followsTrack());
  EXPECT_EQ(settings.pose(5).framing, 3);
}

TEST(CompositeSettings, aPoseWithoutATrackLooksStraightThroughTheChosenLens) {
  CompositeSettings settings;
  settings.camera3D = {.enabled = false, .fov = 52, .yaw = 20, .pitch = 10, .roll = 4};
  EXPECT_EQ(settings.pose(0).fov, 28);
  settings.camera3D.enabled = true;
  const motion::CameraPose pose = settings.pose(0);
  EXPECT_EQ(pose.fov, 52);
  EXPECT_EQ(pose.yaw, 0);
  EXPECT_EQ(pose.pitch, 0);
  EXPECT_EQ(pose.roll, 0);
}

TEST(CompositeSettings, aCopySharesNothing) {
  CompositeSettings settings;
  settings.cameraTrack = trackOf(2, 0);
  CompositeSettings copy = settings;
  EXPECT_EQ(copy, settings);
  copy.cameraTrack->samples.front().framing = 5;
  copy.pip.size = 0.4;
  EXPECT_EQ(settings.cameraTrack->samples.front().framing, 2);
  EXPECT_EQ(settings.pip.size, 0.22);
}

}  // namespace
}  // namespace vesk::compositor
