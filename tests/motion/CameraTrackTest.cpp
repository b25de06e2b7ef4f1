#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "motion/CameraTrack.h"
#include "motion/TakeBuilder.h"

namespace vesk::motion {
namespace {

ZoomSegment segmentAt(double start, double end) {
  ZoomSegment segment;
  segment.start = start;
  segment.end = end;
  segment.focus = {0.7F, 0.4F};
  return segment;
}

CameraTrack built(const std::vector<ZoomSegment>& segments, double duration) {
  return buildTrack(segments, CursorTrack{}, duration, {}, CameraEase::smooth);
}

TEST(CameraTrack, theTableReachesALittlePastTheEnd) {
  EXPECT_EQ(built({segmentAt(1, 4)}, 10).samples.size(), static_cast<std::size_t>(10 * 60) + 2);
  EXPECT_EQ(built({segmentAt(1, 4)}, 0.001).samples.size(), 2U);
  EXPECT_EQ(built({segmentAt(1, 4)}, 25.02099887084961).samples.size(), 1503U);
}

TEST(CameraTrack, withoutSegmentsOrDurationThereAreNoSamples) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  EXPECT_TRUE(built({}, 10).samples.empty());
  EXPECT_TRUE(built({segmentAt(1, 4)}, 0).samples.empty());
  EXPECT_TRUE(built({segmentAt(1, 4)}, -3).samples.empty());
  EXPECT_TRUE(built({segmentAt(1, 4)}, infinity).samples.empty());
  EXPECT_TRUE(built({segmentAt(1, 4)}, std::nan("")).samples.empty());
  auto disabled = segmentAt(1, 4);
  disabled.enabled = false;
  EXPECT_TRUE(built({disabled, segmentAt(5, 5.01 - 1e-9)}, 10).samples.empty());
}

TEST(CameraTrack, anEmptyTrackGivesTheDefaultPose) {
  EXPECT_EQ(CameraTrack{}.sample(3), CameraPose{});
}

TEST(CameraTrack, effectiveSegmentsAreEnabledLongEnoughAndSorted) {
  auto disabled = segmentAt(0, 4);
  disabled.enabled = false;
  auto second = segmentAt(1, 4);
  second.id = "second";
  const std::vector<ZoomSegment> segments{
      segmentAt(7, 9), disabled, segmentAt(1, 2), second, segmentAt(3, 3.005), segmentAt(6, 5)};
  EXPECT_EQ(effectiveSegments(segments), (std::vector{segmentAt(1, 2), second, segmentAt(7, 9)}));
}

TEST(CameraTrack, theOrderOnTheTimelineDoesNotMatter) {
  EXPECT_EQ(built({segmentAt(6, 9), segmentAt(1, 4)}, 12),
            built({segmentAt(1, 4), segmentAt(6, 9)}, 12));
}

TEST(CameraTrack, theLensIsTheSettingsOnlyInPerspective) {
  package::Camera3DSettings camera3D;
  camera3D.fov = 41;
  const std::vector segments{segmentAt(1, 4)};
  EXPECT_EQ(buildTrack(segments, {}, 5, camera3D, CameraEase::smooth).samples[9].fov, 28);
  camera3D.enabled = true;
  EXPECT_EQ(buildTrack(segments, {}, 5, camera3D, CameraEase::smooth).samples[9].fov, 41);
}

TEST(CameraTrack, aDurationBeyondADayIsCutToADay) {
  // Sampling is what a caller sees of it: the last pose stands.
  const auto track = built({segmentAt(1, 4)}, 1e300);
  EXPECT_EQ(track.samples.size(), static_cast<std::size_t>(longestTrack / trackStep) + 2);
  EXPECT_EQ(track.sample(1e300), track.samples.back());
}

CameraTrack ramp() {
  CameraTrack track;
  for (int i = 0; i < 3; ++i) {
    CameraPose pose;
    pose.target = {0.25F * static_cast<float>(i), 0.5F};
    pose.framing = 1 + i;
    pose.yaw = 4 * i;
    pose.pitch = -2 * i;
    pose.roll = i;
    pose.fov = 20 + i;
    pose.motionBlur = 0.1 * i;
    track.samples.push_back(pose);
  }
  return track;
}

TEST(CameraTrack, samplingInterpolatesWhatMovesAndKeepsLensAndBlur) {
  const CameraPose pose = ramp().sample(1.5 / 60);
  EXPECT_NEAR(pose.target.x, 0.375F, 1e-6F);
  EXPECT_NEAR(pose.framing, 2.5, 1e-9);
  EXPECT_NEAR(pose.yaw, 6, 1e-9);
  EXPECT_NEAR(pose.pitch, -3, 1e-9);
  EXPECT_NEAR(pose.roll, 1.5, 1e-9);
  EXPECT_EQ(pose.fov, 21);
  EXPECT_EQ(pose.motionBlur, 0.1);
}

TEST(CameraTrack, samplingNeverExtrapolates) {
  const CameraTrack track = ramp();
  for (const double t : {-1e300, -5.0, -0.5 / 60, -1e-300, 0.0}) {
    EXPECT_EQ(track.sample(t), track.samples.front()) << t;
  }
  for (const double t : {2.0 / 60, 2.5 / 60, 7.0, 1e18, 1e300}) {
    EXPECT_EQ(track.sample(t), track.samples.back()) << t;
  }
}

TEST(CameraTrack, aTableOfOneSampleIsThatSample) {
  CameraTrack track = ramp();
  track.samples.resize(1);
  EXPECT_EQ(track.sample(0.5 / 60), track.samples.front());
}

}  // namespace
}  // namespace vesk::motion
