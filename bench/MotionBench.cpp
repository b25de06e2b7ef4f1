#include <benchmark/benchmark.h>

#include <vector>

#include "motion/CameraPose.h"
#include "motion/CameraTrack.h"
#include "motion/CursorTrack.h"
#include "motion/RandomTake.h"
#include "motion/SmartZoom.h"

// What the motion of a take costs, and how it grows from 6 minutes with 200 clicks to 60 minutes
// with 2,000; the cursor is logged at 120 Hz. The argument is the length in minutes.
namespace {

using namespace vesk::motion;
using vesk::package::RecordingProject;

RecordingProject take(std::int64_t minutes) {
  const auto length = static_cast<std::size_t>(minutes);
  return test::RandomTake(7).project({.duration = static_cast<double>(minutes) * 60,
                                      .clicks = length * 200 / 6,
                                      .movesPerSecond = 120,
                                      .appChanges = length * 5});
}

void inference(benchmark::State& state) {
  const RecordingProject project = take(state.range(0));
  std::size_t segments = 0;
  for ([[maybe_unused]] auto _ : state) {
    const auto all = combinedSegments(project, Sensitivity::standard, true);
    segments = all.size();
    benchmark::DoNotOptimize(all.data());
  }
  state.counters["segments"] = static_cast<double>(segments);
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(project.clicks.size()));
}

void cursorTrack(benchmark::State& state) {
  const RecordingProject project = take(state.range(0));
  for ([[maybe_unused]] auto _ : state) {
    const CursorTrack track(project);
    benchmark::DoNotOptimize(track.samples.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(project.events.size()));
}

void trackOf(benchmark::State& state, bool perspective) {
  const RecordingProject project = take(state.range(0));
  const auto segments = combinedSegments(project, Sensitivity::standard, true);
  const CursorTrack cursor(project);
  vesk::package::Camera3DSettings camera3D;
  camera3D.enabled = perspective;
  std::size_t samples = 0;
  for ([[maybe_unused]] auto _ : state) {
    const CameraTrack track =
        buildTrack(segments, cursor, project.duration(), camera3D, CameraEase::smooth);
    samples = track.samples.size();
    benchmark::DoNotOptimize(track.samples.data());
  }
  state.SetItemsProcessed(state.iterations() * static_cast<std::int64_t>(samples));
}

void flatTrack(benchmark::State& state) {
  trackOf(state, false);
}
void perspectiveTrack(benchmark::State& state) {
  trackOf(state, true);
}

/// One smoothed position, at the instants of a walk through the take.
void smoothedCursor(benchmark::State& state) {
  const RecordingProject project = take(state.range(0));
  const CursorTrack cursor(project);
  double t = 0;
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(cursor.smoothed(t, 0.75, 0.14));
    t = t < project.duration() ? t + trackStep : 0;
  }
  state.SetItemsProcessed(state.iterations());
}

/// One pose made to fill a 16:9 frame: square to the picture, or tilted.
void solve(benchmark::State& state, bool tilted) {
  test::RandomTake random(3);
  std::vector<CameraPose> poses(1024);
  for (CameraPose& pose : poses) {
    pose.target = random.point();
    pose.framing = random.between(1, 3);
    pose.yaw = tilted ? random.between(-30, 30) : 0;
    pose.pitch = tilted ? random.between(-14, 14) : 0;
  }
  std::size_t i = 0;
  for ([[maybe_unused]] auto _ : state) {
    constexpr double aspect = 16.0 / 9;
    benchmark::DoNotOptimize(poses[i++ % poses.size()].clamped(aspect).solve(aspect, aspect));
  }
  state.SetItemsProcessed(state.iterations());
}

void solveSquare(benchmark::State& state) {
  solve(state, false);
}
void solveTilted(benchmark::State& state) {
  solve(state, true);
}

BENCHMARK(inference)->Arg(6)->Arg(60)->Unit(benchmark::kMicrosecond);
BENCHMARK(cursorTrack)->Arg(6)->Arg(60)->Unit(benchmark::kMillisecond);
BENCHMARK(flatTrack)->Arg(6)->Arg(60)->Unit(benchmark::kMillisecond);
BENCHMARK(perspectiveTrack)->Arg(6)->Arg(60)->Unit(benchmark::kMillisecond);
BENCHMARK(smoothedCursor)->Arg(6)->Arg(60);
BENCHMARK(solveSquare);
BENCHMARK(solveTilted);

}  // namespace
