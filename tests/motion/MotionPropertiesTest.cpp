#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "motion/CameraTrack.h"
#include "motion/ManualMarks.h"
#include "motion/RandomTake.h"
#include "motion/SmartZoom.h"

// What holds for every take, on seeded random ones.
namespace vesk::motion {
namespace {

using test::RandomTake;

constexpr std::uint64_t rounds = 200;

package::RecordingProject randomProject(RandomTake& random) {
  RandomTake::Shape shape;
  shape.duration = random.between(2, 40);
  shape.clicks = random.below(50);
  shape.movesPerSecond = 60;
  shape.marks = random.below(14);
  return random.project(shape);
}

bool isFinite(const CameraPose& pose) {
  return std::isfinite(pose.target.x) && std::isfinite(pose.target.y) && std::isfinite(pose.yaw) &&
         std::isfinite(pose.pitch) && std::isfinite(pose.roll) && std::isfinite(pose.fov) &&
         std::isfinite(pose.framing) && std::isfinite(pose.motionBlur);
}

TEST(MotionProperties, automaticSegmentsAreSortedApartAndWithinLimits) {
  for (std::uint64_t seed = 0; seed < rounds; ++seed) {
    RandomTake random(seed);
    const auto project = randomProject(random);
    for (const Sensitivity level : allSensitivities) {
      const auto segments = inferAutoSegments(project, level);
      for (std::size_t i = 0; i < segments.size(); ++i) {
        const ZoomSegment& segment = segments[i];
        EXPECT_GE(segment.level, 1.4);
        EXPECT_LE(segment.level, 3.2);
        EXPECT_GE(segment.start, 0);
        EXPECT_LE(segment.end, project.duration());
        EXPECT_GT(segment.end - segment.start, 0.25);
        EXPECT_FALSE(segment.isManual);
        if (i > 0) {
          EXPECT_GE(segment.start, segments[i - 1].end);
        }
      }
    }
  }
}

TEST(MotionProperties, combinedSegmentsAreSortedAndNeverOverlapAManualOne) {
  for (std::uint64_t seed = 0; seed < rounds; ++seed) {
    RandomTake random(seed);
    const auto project = randomProject(random);
    const auto manual = pairManualMarks(project);
    const auto all = combinedSegments(project, Sensitivity::dense, true);
    EXPECT_TRUE(std::ranges::is_sorted(all, {}, &ZoomSegment::start));
    EXPECT_EQ(std::ranges::count(all, true, &ZoomSegment::isManual),
              static_cast<std::ptrdiff_t>(manual.size()));
    for (std::size_t i = 1; i < all.size(); ++i) {
      EXPECT_LE(all[i - 1].end, all[i].start) << seed;
    }
  }
}

TEST(MotionProperties, theSameTakeGivesTheSameTrack) {
  for (std::uint64_t seed = 0; seed < 20; ++seed) {
    const auto build = [seed] {
      RandomTake random(seed);
      const auto project = randomProject(random);
      return buildTrack(combinedSegments(project, Sensitivity::standard, true),
                        CursorTrack(project), project.duration(), random.camera3D(), random.ease());
    };
    EXPECT_EQ(build(), build());
  }
}

TEST(MotionProperties, everyPoseOfAnyTimelineIsFinite) {
  for (std::uint64_t seed = 0; seed < rounds; ++seed) {
    RandomTake random(seed);
    const auto project = randomProject(random);
    const auto segments = random.editedSegments(project.duration(), random.below(12));
    const auto track = buildTrack(segments, CursorTrack(project), project.duration(),
                                  random.camera3D(), random.ease());
    ASSERT_TRUE(std::ranges::all_of(track.samples, isFinite)) << seed;
  }
}

TEST(MotionProperties, anglesStayWithinTheSettingsMagnitudes) {
  for (std::uint64_t seed = 0; seed < rounds; ++seed) {
    RandomTake random(seed);
    const auto project = randomProject(random);
    const auto settings = random.camera3D();
    const auto track =
        buildTrack(combinedSegments(project, Sensitivity::dense, true), CursorTrack(project),
                   project.duration(), settings, random.ease());
    for (const CameraPose& pose : track.samples) {
      ASSERT_LE(std::abs(pose.yaw), std::abs(settings.yaw) + 1e-9);
      ASSERT_LE(std::abs(pose.pitch), std::abs(settings.pitch) + 1e-9);
      ASSERT_LE(std::abs(pose.roll), std::abs(settings.roll) + 1e-9);
      if (!settings.enabled) {
        ASSERT_EQ(pose.yaw, 0);
      }
    }
  }
}

TEST(MotionProperties, followingKeepsItsSpeedLimitWhileTheCursorIsInSight) {
  for (std::uint64_t seed = 0; seed < rounds; ++seed) {
    RandomTake random(seed);
    const auto project = randomProject(random);
    const CursorTrack cursor(project);
    ZoomSegment segment;
    segment.start = 0;
    segment.end = project.duration();
    segment.level = random.between(1.1, 3);
    segment.focus = random.point();
    segment.followSpeed = random.between(0.1, 1);
    const auto track =
        buildTrack(std::vector{segment}, cursor, project.duration(), {}, CameraEase::smooth);
    const double limit = 16 * segment.followSpeed / 60;
    for (std::size_t i = 60; i + 60 < track.samples.size(); ++i) {
      const CameraPose& before = track.samples[i - 1];
      const CameraPose& now = track.samples[i];
      const glm::vec2 seen =
          cursor.smoothed(trackStep * static_cast<double>(i), 0.75, 0.14) - before.target;
      // Only the margin may move the camera faster, and only when the cursor has reached it.
      const double reach = (0.5 - 0.04) / now.framing;
      for (int axis = 0; axis < 2; ++axis) {
        const double forced = std::max(std::abs(seen[axis]) - reach, 0.0);
        ASSERT_LE(std::abs(now.target[axis] - before.target[axis]), std::max(limit, forced) + 1e-5)
            << seed << " " << i;
      }
    }
  }
}

}  // namespace
}  // namespace vesk::motion
