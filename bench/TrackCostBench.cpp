#include <benchmark/benchmark.h>

#include <string>
#include <vector>

#include "motion/CameraTrack.h"
#include "motion/RandomTake.h"

// A sample of a track costs the same however much stands on the timeline: each of these takes once
// to twice as long with 10,000 as with 10, where a scan at every sample would take hundreds of
// times as long. The argument is how many there are.
namespace {

using namespace vesk::motion;

constexpr double duration = 300;
constexpr std::size_t few = 10;
constexpr std::size_t many = 10'000;

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

void buildAll(benchmark::State& state, const std::vector<ZoomSegment>& segments,
              const CursorTrack& cursor) {
  for ([[maybe_unused]] auto _ : state) {
    const CameraTrack track = buildTrack(segments, cursor, duration, {}, CameraEase::smooth);
    benchmark::DoNotOptimize(track.samples.data());
  }
}

void trackWithSegments(benchmark::State& state) {
  buildAll(state, segmentsInARow(static_cast<std::size_t>(state.range(0))), cursorWithClicks(few));
}

void trackWithClicks(benchmark::State& state) {
  buildAll(state, segmentsInARow(few), cursorWithClicks(static_cast<std::size_t>(state.range(0))));
}

void trackWithPans(benchmark::State& state) {
  buildAll(state, segmentWithPans(static_cast<std::size_t>(state.range(0))), cursorWithClicks(few));
}

BENCHMARK(trackWithSegments)->Arg(few)->Arg(many)->Unit(benchmark::kMillisecond);
BENCHMARK(trackWithClicks)->Arg(few)->Arg(many)->Unit(benchmark::kMillisecond);
BENCHMARK(trackWithPans)->Arg(few)->Arg(many)->Unit(benchmark::kMillisecond);

}  // namespace
