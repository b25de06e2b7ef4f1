#include <gtest/gtest.h>

#include <cmath>

#include "motion/CameraTrack.h"
#include "motion/KeyframePass.h"
#include "motion/RandomTake.h"
#include "motion/SmartZoom.h"
#include "motion/ViewportSmoothing.h"

namespace vesk::motion {
namespace {

ZoomSegment segmentAt(double start, double end, glm::vec2 focus) {
  ZoomSegment segment;
  segment.start = start;
  segment.end = end;
  segment.focus = focus;
  segment.easeIn = 0.5;
  segment.easeOut = 0.5;
  return segment;
}

std::vector<CameraPose> poses(const std::vector<ZoomSegment>& segments, double duration = 12,
                              CameraEase ease = CameraEase::smooth) {
  return keyframePass(segments, static_cast<std::size_t>(duration * 60) + 2, 28, ease);
}

const CameraPose& at(const std::vector<CameraPose>& samples, double t) {
  return samples[static_cast<std::size_t>(std::lround(t * 60))];
}

double lowestFraming(const std::vector<CameraPose>& samples, double from, double to) {
  double lowest = 1e9;
  for (double t = from; t <= to; t += 1.0 / 60) {
    lowest = std::min(lowest, at(samples, t).framing);
  }
  return lowest;
}

TEST(KeyframePass, aSingleSegmentLeavesHomeHoldsAndComesHome) {
  const auto samples = poses({segmentAt(2, 6, {0.6F, 0.4F})});
  EXPECT_EQ(at(samples, 0).framing, 1.0);
  EXPECT_EQ(at(samples, 2).framing, 1.0);
  EXPECT_EQ(at(samples, 2).target, glm::vec2(0.5F, 0.5F));
  EXPECT_GT(at(samples, 2.25).framing, 1.2);
  EXPECT_LT(at(samples, 2.25).framing, 1.8);
  for (const double t : {2.5, 3.0, 4.0, 5.5}) {
    EXPECT_NEAR(at(samples, t).framing, 2.0, 1e-12) << t;
    EXPECT_NEAR(at(samples, t).target.x, 0.6F, 1e-6F) << t;
    EXPECT_NEAR(at(samples, t).motionBlur, 0.35, 1e-12) << t;
  }
  EXPECT_LT(at(samples, 5.75).framing, 1.8);
  EXPECT_EQ(at(samples, 6).framing, 1.0);
  EXPECT_EQ(at(samples, 6).motionBlur, 0.0);
  EXPECT_EQ(at(samples, 12).framing, 1.0);
}

TEST(KeyframePass, beforeTheFirstKeyframeTheWholePictureShows) {
  const auto samples = poses({segmentAt(2, 6, {0.6F, 0.4F})});
  CameraPose home;
  home.fov = 28;
  EXPECT_EQ(samples.front(), home);
}

TEST(KeyframePass, everySampleCarriesTheLensAndNoAngles) {
  for (const CameraPose& pose :
       keyframePass(std::vector{segmentAt(2, 6, {0.6F, 0.4F})}, 500, 41, CameraEase::cinema)) {
    EXPECT_EQ(pose.fov, 41);
    EXPECT_EQ(pose.yaw, 0);
    EXPECT_EQ(pose.pitch, 0);
    EXPECT_EQ(pose.roll, 0);
  }
}

TEST(KeyframePass, closeNeighboursFlowFromOneFramingToTheNext) {
  const auto samples = poses({segmentAt(1, 4, {0.3F, 0.5F}), segmentAt(5, 8, {0.6F, 0.5F})});
  EXPECT_NEAR(lowestFraming(samples, 1.5, 7.5), 2.0, 1e-9);
  EXPECT_NEAR(at(samples, 4).target.x, 0.3F, 1e-6F);
  EXPECT_NEAR(at(samples, 5.5).target.x, 0.6F, 1e-6F);
}

TEST(KeyframePass, distantNeighboursGoHomeInBetween) {
  const auto samples = poses({segmentAt(1, 4, {0.15F, 0.5F}), segmentAt(5, 8, {0.85F, 0.5F})});
  EXPECT_EQ(lowestFraming(samples, 4, 5), 1.0);
}

TEST(KeyframePass, aResetGoesHomeWhateverTheDistance) {
  auto first = segmentAt(1, 4, {0.3F, 0.5F});
  first.endsWithExplicitReset = true;
  EXPECT_EQ(lowestFraming(poses({first, segmentAt(5, 8, {0.3F, 0.5F})}), 4, 5), 1.0);
}

TEST(KeyframePass, theLimitsOfJoiningAreStrict) {
  const auto first = segmentAt(1, 4, {0.0F, 0.5F});
  EXPECT_TRUE(areJoined(first, segmentAt(5.49, 8, {0.0F, 0.5F})));
  EXPECT_FALSE(areJoined(first, segmentAt(5.5, 8, {0.0F, 0.5F})));
  EXPECT_TRUE(areJoined(first, segmentAt(5, 8, {0.59F, 0.5F})));
  EXPECT_FALSE(areJoined(first, segmentAt(5, 8, {0.6F, 0.5F})));
  EXPECT_TRUE(areJoined(first, segmentAt(3, 8, {0.0F, 0.5F})));  // overlapping
}

TEST(KeyframePass, blurEasesAlsoBetweenEqualFramings) {
  auto second = segmentAt(5, 8, {0.3F, 0.5F});
  second.motionBlur = 0.85;
  const auto samples = poses({segmentAt(1, 4, {0.3F, 0.5F}), second});
  EXPECT_NEAR(at(samples, 4).motionBlur, 0.35, 1e-9);
  EXPECT_NEAR(at(samples, 4.75).motionBlur, 0.6, 1e-9);
  EXPECT_NEAR(at(samples, 5.5).motionBlur, 0.85, 1e-9);
}

TEST(KeyframePass, joiningLooksAtTheFociNotAtTheLastPan) {
  auto first = segmentAt(1, 4, {0.3F, 0.5F});
  first.waypoints = {{.t = 2, .focus = {0.95F, 0.5F}}};
  const auto second = segmentAt(5, 8, {0.3F, 0.5F});
  EXPECT_TRUE(areJoined(first, second));
  // The framing handed over is nevertheless that of the last pan.
  EXPECT_NEAR(at(poses({first, second}), 4).target.x, 0.75F, 1e-6F);
}

TEST(KeyframePass, easingsLongerThanTheSegmentLeaveNoHold) {
  auto segment = segmentAt(2, 2.75, {0.6F, 0.4F});
  const auto samples = poses({segment});
  EXPECT_NEAR(at(samples, 2.5).framing, 2.0, 1e-12);
  EXPECT_LT(at(samples, 2.5 - 1.0 / 60).framing, 2.0);
  EXPECT_LT(at(samples, 2.5 + 1.0 / 60).framing, 2.0);
}

TEST(KeyframePass, aZoomIntoACornerNeverShowsThePicturesEdge) {
  for (const CameraEase ease :
       {CameraEase::smooth, CameraEase::snappy, CameraEase::cinema, CameraEase::linear}) {
    const auto samples = poses({segmentAt(2, 6, {0.02F, 0.98F})}, 12, ease);
    for (const CameraPose& pose : samples) {
      const auto half = static_cast<float>(0.5 / pose.framing);
      EXPECT_GE(pose.target.x - half, -1e-6F);
      EXPECT_LE(pose.target.y + half, 1 + 1e-6F);
    }
  }
}

TEST(KeyframePass, viewportsStayInsideThePictureOnAnyTake) {
  test::RandomTake random(11);
  for (int round = 0; round < 100; ++round) {
    const auto project = random.project({.duration = 15, .clicks = 12, .marks = 4});
    auto segments = combinedSegments(project, Sensitivity::dense, true);
    if (segments.empty()) {
      continue;
    }
    for (ZoomSegment& segment : segments) {
      segment.level = random.between(1, 5);
      segment.focus = random.point() * 2.0F - 0.5F;
    }
    const auto sharp = poses(segments, 15, CameraEase::cinema);
    for (const auto& samples : {sharp, smoothViewports(sharp)}) {
      for (const CameraPose& pose : samples) {
        const auto half = static_cast<float>(0.5 / pose.framing);
        for (int axis = 0; axis < 2; ++axis) {
          ASSERT_GE(pose.target[axis] - half, -1e-5F) << round;
          ASSERT_LE(pose.target[axis] + half, 1 + 1e-5F) << round;
        }
      }
    }
  }
}

TEST(KeyframePass, theViewportsEdgesMoveOneWayDuringAnEase) {
  const auto samples = poses({segmentAt(2, 6, {0.7F, 0.35F})});
  const auto edges = [](const CameraPose& pose) {
    const double half = 0.5 / pose.framing;
    return std::array{pose.target.x - half, pose.target.y - half, pose.target.x + half,
                      pose.target.y + half};
  };
  for (std::size_t edge = 0; edge < 4; ++edge) {
    const double way = edges(at(samples, 2.5)).at(edge) - edges(at(samples, 2)).at(edge);
    for (std::size_t i = 121; i <= 150; ++i) {
      const double moved = edges(samples[i]).at(edge) - edges(samples[i - 1]).at(edge);
      EXPECT_GE(moved * (way < 0 ? -1 : 1), -1e-6);
    }
  }
}

TEST(KeyframePass, aSenselessLevelStaysFinite) {
  for (const double level : {0.0, -3.0, 1e-300, 1e300}) {
    auto segment = segmentAt(2, 6, {0.7F, 0.35F});
    segment.level = level;
    for (const CameraPose& pose : smoothViewports(poses({segment}))) {
      ASSERT_TRUE(std::isfinite(pose.framing)) << level;
      ASSERT_TRUE(std::isfinite(pose.target.x)) << level;
    }
  }
}

}  // namespace
}  // namespace vesk::motion
