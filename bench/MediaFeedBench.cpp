#include <benchmark/benchmark.h>

#include <algorithm>
#include <chrono>
#include <cstdlib>
#include <filesystem>
#include <iterator>
#include <memory>
#include <optional>
#include <random>
#include <thread>
#include <utility>
#include <vector>

#include "media/PictureFeed.h"
#include "media/VideoReader.h"

// The movie is that of VESK_BENCH_MOVIE, or the sample's.

namespace vesk::media {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

std::filesystem::path movie() {
  const char* named = std::getenv("VESK_BENCH_MOVIE");
  return named != nullptr ? named : VESK_SOURCE_DIR "/samples/tour.recording/screen.mov";
}

/// When each picture of the movie comes.
std::vector<double> timesOf(VideoReader reader) {
  std::vector<double> times;
  for (auto picture = reader.next(); picture && *picture; picture = reader.next()) {
    times.push_back((*picture)->pts);
  }
  return times;
}

/// A feed of the movie and the times of its pictures; skips the benchmark where it has none.
struct Bench {
  explicit Bench(benchmark::State& state) {
    auto reader = VideoReader::open(movie());
    auto opened = PictureFeed::open(movie());
    if (!reader || !opened) {
      state.SkipWithError((reader ? opened.error() : reader.error()).message.c_str());
      return;
    }
    times = timesOf(*std::move(reader));
    feed = *std::move(opened);
    if (times.empty()) state.SkipWithError("影片里没有画面");
  }
  [[nodiscard]] bool isReady() const { return !times.empty(); }

  std::vector<double> times;
  std::unique_ptr<PictureFeed> feed;
};

double seconds(Clock::duration duration) {
  return std::chrono::duration<double>(duration).count();
}

void openToFirstPicture(benchmark::State& state) {
  for ([[maybe_unused]] auto _ : state) {
    auto feed = PictureFeed::open(movie());
    if (!feed || !(*feed)->waitForPictureAt(0)) {
      state.SkipWithError("影片打不开");
      return;
    }
  }
}
BENCHMARK(openToFirstPicture)->Unit(benchmark::kMillisecond)->UseRealTime();

/// From the seek to the exact picture, at random times.
void seekAnywhere(benchmark::State& state) {
  const Bench bench(state);
  if (!bench.isReady()) return;
  std::mt19937 random(1);
  std::uniform_real_distribution<double> anywhere(0, bench.times.back());
  std::vector<double> waits;
  for ([[maybe_unused]] auto _ : state) {
    const auto start = Clock::now();
    benchmark::DoNotOptimize(bench.feed->waitForPictureAt(anywhere(random)));
    waits.push_back(seconds(Clock::now() - start));
  }
  std::ranges::sort(waits);
  state.counters["median_ms"] = 1000 * waits[waits.size() / 2];
  state.counters["p95_ms"] = 1000 * waits[waits.size() * 95 / 100];
  state.counters["most_ms"] = 1000 * waits.back();
}
BENCHMARK(seekAnywhere)->Unit(benchmark::kMillisecond)->UseRealTime()->Iterations(60);

/// Drags the playhead over the movie at a speed (seconds of the movie a second), with a new seek
/// every 16 ms, and counts the pictures it shows and those it would show if decoding took no time.
void drag(benchmark::State& state, double speed) {
  const Bench bench(state);
  if (!bench.isReady()) return;
  const double length = bench.times.back() - bench.times.front();
  const int steps = static_cast<int>(length / std::abs(speed) / 0.016);
  int shown = 0;
  int possible = 0;
  int exact = 0;
  double longest = 0;
  for ([[maybe_unused]] auto _ : state) {
    std::optional<VideoFrame> last =
        bench.feed->waitForPictureAt(speed > 0 ? bench.times.front() : bench.times.back());
    std::ptrdiff_t lastIndex = -1;
    auto changed = Clock::now();
    auto tick = changed;
    for (int step = 0; step < steps; ++step) {
      const double way = length * step / steps;
      const double time = speed > 0 ? bench.times.front() + way : bench.times.back() - way;
      const auto index = std::distance(bench.times.begin(),
                                       std::ranges::upper_bound(bench.times, time + 0.000001));
      possible += std::exchange(lastIndex, index) != index ? 1 : 0;
      bench.feed->seek(time);
      std::this_thread::sleep_until(tick += 16ms);
      exact += bench.feed->isExactAt(time) ? 1 : 0;
      auto picture = bench.feed->pictureAt(time);
      const auto now = Clock::now();
      if (picture && last && picture->isSamePictureAs(*last)) {
        // Where the movie itself stands still nobody waits.
        if (bench.feed->isExactAt(time)) changed = now;
        continue;
      }
      ++shown;
      longest = std::max(longest, seconds(now - std::exchange(changed, now)));
      last = std::move(picture);
    }
  }
  const double duration = 0.016 * steps * static_cast<double>(state.iterations());
  state.counters["shown/s"] = shown / duration;
  state.counters["possible/s"] = possible / duration;
  state.counters["exact"] = exact / (steps * static_cast<double>(state.iterations()));
  state.counters["longest_ms"] = 1000 * longest;
}
BENCHMARK_CAPTURE(drag, forwards, 1.0)->Iterations(1)->UseRealTime();
BENCHMARK_CAPTURE(drag, forwards4x, 4.0)->Iterations(1)->UseRealTime();
BENCHMARK_CAPTURE(drag, backwards, -1.0)->Iterations(1)->UseRealTime();
BENCHMARK_CAPTURE(drag, backwards4x, -4.0)->Iterations(1)->UseRealTime();
BENCHMARK_CAPTURE(drag, backwards16x, -16.0)->Iterations(1)->UseRealTime();

}  // namespace
}  // namespace vesk::media
