#include <gtest/gtest.h>

#include <algorithm>
#include <ctime>
#include <limits>
#include <string>

#include "motion/CameraTrack.h"
#include "motion/RandomTake.h"

// A sample of a track costs the same however much stands on the timeline. The bounds are far from
// what is measured (1 to 2) and further from what a scan at every sample would give (hundreds).
namespace vesk::motion {
namespace {

constexpr double duration = 300;
constexpr std::size_t few = 10;
constexpr std::size_t many = 10'000;
constexpr double limit = 6;

/// Processor seconds of the fastest of some builds.
double cost(const std::vector<ZoomSegment>& segments, const CursorTrack& cursor) {
  double best = std::numeric_limits<double>::infinity();
  for (int run = 0; run < 5; ++run) {
    const std::clock_t begin = std::clock();
    const CameraTrack track = buildTrack(segments, cursor, duration, {}, CameraEase::smooth);
    const std::clock_t end = std::clock();
    EXPECT_FALSE(track.samples.empty());
    best = std::min(best, static_cast<double>(end - begin) / CLOCKS_PER_SEC);
  }
  return best;
}

CursorTrack cursorWithClicks(std::size_t clicks) {
  test::RandomTake random(5);
  CursorTrack cursor(random.project({.duration = duration, .clicks = 0}));
  for (std::size_t i = 0; i < clicks; ++i) {
    cursor.clickTimes.push_back(duration * static_cast<double>(i) / static_cast<double>(clicks));
  }
  return cursor;
}

ZoomSegment spanning(double start, double end) {
  ZoomSegment segment;
  segment.id = std::to_string(start);
  segment.start = start;
  segment.end = end;
  segment.easeIn = 0.1 * (end - start);
  segment.easeOut = 0.1 * (end - start);
  return segment;
}

std::vector<ZoomSegment> segmentsInARow(std::size_t count) {
  std::vector<ZoomSegment> segments;
  segments.reserve(count);
  const double length = duration / static_cast<double>(count);
  for (std::size_t i = 0; i < count; ++i) {
    segments.push_back(
        spanning(static_cast<double>(i) * length, static_cast<double>(i + 1) * length));
  }
  return segments;
}

/// One segment with pans so short that hardly a sample is on one.
std::vector<ZoomSegment> segmentWithPans(std::size_t count) {
  ZoomSegment segment = spanning(0, duration);
  segment.panDuration = 1e-6;
  for (std::size_t i = 0; i < count; ++i) {
    segment.waypoints.push_back(
        {.t = duration * static_cast<double>(count - i) / static_cast<double>(count + 1),
         .focus = {0.5F, 0.5F}});
  }
  return {segment};
}

TEST(TrackCost, doesNotGrowWithTheNumberOfSegments) {
  const CursorTrack cursor = cursorWithClicks(few);
  EXPECT_LT(cost(segmentsInARow(many), cursor), limit * cost(segmentsInARow(few), cursor));
}

TEST(TrackCost, doesNotGrowWithTheNumberOfClicks) {
  const auto segments = segmentsInARow(few);
  EXPECT_LT(cost(segments, cursorWithClicks(many)), limit * cost(segments, cursorWithClicks(few)));
}

TEST(TrackCost, doesNotGrowWithTheNumberOfPans) {
  const CursorTrack cursor = cursorWithClicks(few);
  EXPECT_LT(cost(segmentWithPans(many), cursor), limit * cost(segmentWithPans(few), cursor));
}

}  // namespace
}  // namespace vesk::motion
