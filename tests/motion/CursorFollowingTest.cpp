#include <gtest/gtest.h>

#include <cmath>

#include "motion/CameraTrack.h"
#include "motion/CursorFollowing.h"
#include "motion/TakeBuilder.h"

namespace vesk::motion {
namespace {

constexpr double duration = 12;

ZoomSegment hold() {
  ZoomSegment segment;
  segment.id = "s";
  segment.start = 1;
  segment.end = 11;
  segment.easeIn = 0.5;
  segment.easeOut = 0.5;
  return segment;
}

CursorTrack cursorAt(glm::vec2 (*place)(double)) {
  CursorTrack track;
  for (int i = 0; i <= static_cast<int>(duration * 120); ++i) {
    track.samples.push_back({.t = i / 120.0, .p = place(i / 120.0)});
  }
  return track;
}

CameraTrack trackOf(const std::vector<ZoomSegment>& segments, const CursorTrack& cursor,
                    bool perspective = false) {
  package::Camera3DSettings camera3D;
  camera3D.enabled = perspective;
  return buildTrack(segments, cursor, duration, camera3D, CameraEase::smooth);
}

glm::vec2 targetAt(const CameraTrack& track, double t) {
  return track.samples[static_cast<std::size_t>(std::lround(t * 60))].target;
}

TEST(CursorFollowing, aCursorInsideTheDeadZoneMovesNothing) {
  const auto track =
      trackOf({hold()}, cursorAt([](double t) {
                return glm::vec2(0.5F + 0.1F * std::sin(static_cast<float>(t) * 5), 0.5F);
              }));
  const glm::vec2 takenOver = targetAt(track, 1.5);
  const glm::vec2 held = targetAt(track, 1.75);
  EXPECT_NEAR(held.x, takenOver.x, 1e-6F);
  EXPECT_NEAR(held.y, takenOver.y, 1e-6F);
  for (double t = 1.75; t < 10.4; t += 1.0 / 60) {
    EXPECT_EQ(targetAt(track, t), held) << t;
  }
}

TEST(CursorFollowing, aJumpingCursorIsCaughtUpWithoutAJump) {
  auto segment = hold();
  segment.level = 1.25;  // wide enough that the margin does not force the move
  const auto cursor = cursorAt([](double t) { return glm::vec2(t < 5 ? 0.5F : 0.85F, 0.5F); });
  const auto track = trackOf({segment}, cursor);
  const double limit = 16 * segment.followSpeed / 60;
  double moved = 0;
  for (std::size_t i = 120; i < 600; ++i) {
    const double stepLength = std::abs(track.samples[i].target.x - track.samples[i - 1].target.x);
    EXPECT_LE(stepLength, limit + 1e-6);
    moved += stepLength;
  }
  EXPECT_GT(moved, 0.0);
}

TEST(CursorFollowing, theCursorNeverComesNearTheViewportsEdge) {
  const auto cursor = cursorAt([](double t) {
    const auto time = static_cast<float>(t);
    return glm::vec2(0.5F + 0.45F * std::sin(time * 3), 0.5F + 0.45F * std::cos(time * 2));
  });
  const auto track = trackOf({hold()}, cursor);
  for (double t = 1.8; t < 10.4; t += 1.0 / 60) {
    const CameraPose& pose = track.samples[static_cast<std::size_t>(std::lround(t * 60))];
    const glm::vec2 seen = cursor.smoothed(std::lround(t * 60) * trackStep, 0.75, 0.14);
    const auto reach = static_cast<float>((0.5 - 0.04) / pose.framing) + 1e-5F;
    EXPECT_LE(std::abs(seen.x - pose.target.x), reach) << t;
    EXPECT_LE(std::abs(seen.y - pose.target.y), reach) << t;
  }
}

TEST(CursorFollowing, controlPassesWithinAQuarterSecond) {
  // The cursor rests outside the dead zone, so following leads away from the keyframes at once.
  const auto track = trackOf({hold()}, cursorAt([](double) { return glm::vec2(0.95F, 0.5F); }));
  EXPECT_NEAR(targetAt(track, 1.5).x, 0.5F, 1e-6F);
  EXPECT_LT(targetAt(track, 1.55).x, targetAt(track, 1.75).x);
  const auto half = static_cast<float>(0.5 / 2);
  EXPECT_GE(targetAt(track, 1.75).x, 0.95F - half + 0.04F / 2 - 1e-5F);
}

TEST(CursorFollowing, inTheEaseOutTheCameraLeavesFromWhereItStands) {
  const auto track = trackOf({hold()}, cursorAt([](double) { return glm::vec2(0.95F, 0.5F); }));
  const glm::vec2 atEnd = targetAt(track, 10.5);
  for (double t = 10.5; t < 11; t += 1.0 / 60) {
    EXPECT_NEAR(targetAt(track, t).x, atEnd.x, 1e-6F) << t;
  }
}

TEST(CursorFollowing, aSegmentThatDoesNotFollowStaysOnItsKeyframes) {
  auto segment = hold();
  segment.followCursor = false;
  const auto track = trackOf({segment}, cursorAt([](double) { return glm::vec2(0.95F, 0.1F); }));
  EXPECT_NEAR(targetAt(track, 5).x, 0.5F, 1e-6F);
  EXPECT_NEAR(targetAt(track, 5).y, 0.5F, 1e-6F);
}

TEST(CursorFollowing, aPanRunsAlsoWhereNothingFollows) {
  auto segment = hold();
  segment.followCursor = false;
  segment.waypoints = {{.t = 4, .focus = {0.7F, 0.3F}}};
  const auto track = trackOf({segment}, CursorTrack{});
  const std::size_t last = 4 * 60 + 32;  // 0.533 s into a pan of 0.55 s
  EXPECT_NEAR(track.samples[last].target.x, 0.7F, 0.001F);
  EXPECT_NEAR(track.samples[last].target.y, 0.3F, 0.001F);
}

TEST(CursorFollowing, aPanStartsWhereTheCameraStands) {
  auto segment = hold();
  segment.waypoints = {{.t = 4, .focus = {0.7F, 0.3F}}};
  const auto track = trackOf({segment}, cursorAt([](double) { return glm::vec2(0.5F, 0.5F); }));
  EXPECT_NEAR(targetAt(track, 4).x, targetAt(track, 4 - 1.0 / 60).x, 1e-4F);
  for (std::size_t i = 240; i < 272; ++i) {
    EXPECT_GE(track.samples[i + 1].target.x, track.samples[i].target.x - 1e-6F);
  }
}

TEST(CursorFollowing, anEmptyHoldFollowsNothing) {
  auto segment = hold();
  segment.easeIn = 0.505;  // arrival falls between two samples
  segment.end = 1.9;       // easing out would begin before it
  const auto track = trackOf({segment}, cursorAt([](double) { return glm::vec2(0.95F, 0.5F); }));
  for (double t = 1; t < 1.9; t += 1.0 / 60) {
    EXPECT_LT(targetAt(track, t).x, 0.55F) << t;
  }
}

TEST(CursorFollowing, inPerspectiveOnlyTheHeightFollows) {
  const auto cursor =
      cursorAt([](double t) { return glm::vec2(t < 3 ? 0.5F : 0.95F, t < 3 ? 0.5F : 0.9F); });
  const auto flat = trackOf({hold()}, cursor);
  const auto deep = trackOf({hold()}, cursor, true);
  EXPECT_NEAR(targetAt(deep, 1.75).x, 0.5F, 1e-6F);
  for (double t = 1.75; t < 10.4; t += 1.0 / 60) {
    EXPECT_EQ(targetAt(deep, t).x, targetAt(deep, 1.75).x) << t;
  }
  EXPECT_GT(targetAt(flat, 9).x, 0.6F);
  EXPECT_GT(targetAt(deep, 9).y, 0.6F);
}

TEST(CursorFollowing, withoutACursorLogTheFramingHolds) {
  const auto track = trackOf({hold()}, CursorTrack{});
  EXPECT_NEAR(targetAt(track, 5).x, 0.5F, 1e-6F);
  EXPECT_NEAR(track.samples[300].framing, 2, 1e-9);
}

}  // namespace
}  // namespace vesk::motion
