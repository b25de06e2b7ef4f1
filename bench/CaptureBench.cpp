// What a picture of scrolling text costs each encoder that works on this machine: the column "CPU"
// is the time of all threads for one picture. And what comes before an encoder.
#include <benchmark/benchmark.h>

#include <cstdint>
#include <string>
#include <vector>

#include "media/CaptureEncoder.h"
#include "media/PictureEncoder.h"
#include "media/PictureFitter.h"
#include "media/ScrollingText.h"

namespace vesk::media {
namespace {

constexpr int fps = 60;
constexpr double bitsPerPixel = 0.05;
constexpr int picturesEach = 120;

struct Size {
  int width;
  int height;
};
constexpr Size sizes[] = {{1280, 720}, {1920, 1080}, {3840, 2160}};

PictureTrackSettings settingsFor(Size size) {
  return {.width = size.width,
          .height = size.height,
          .fps = fps,
          .bitRate = captureBitRate(bitsPerPixel, size.width, size.height, fps)};
}

/// The pictures are drawn outside the measured time.
void encode(benchmark::State& state, const CaptureEncoder& choice, Size size) {
  auto encoder = PictureEncoder::open(choice, settingsFor(size)).value();
  ScrollingText text(size.width, size.height);
  I420Picture picture(size.width, size.height);
  std::vector<PacketPtr> packets;
  std::int64_t time = 0;
  for ([[maybe_unused]] auto _ : state) {
    state.PauseTiming();
    text.drawNext(picture);
    packets.clear();
    state.ResumeTiming();
    if (encoder.encode(picture, time, time % (2 * pictureTicks) == 0, packets) < 0) {
      state.SkipWithError("the encoder gave up");
      break;
    }
    time += pictureTicks / fps;
  }
}

void fitCameraPicture(benchmark::State& state) {
  const int width = static_cast<int>(state.range(0));
  const int height = static_cast<int>(state.range(1));
  const std::vector<std::uint8_t> bytes(std::size_t{4} * static_cast<std::size_t>(width * height),
                                        90);
  const BgraView view{bytes.data(), std::ptrdiff_t{4} * width, width, height};
  PictureFitter fitter;
  I420Picture target(1280, 720);
  for ([[maybe_unused]] auto _ : state) {
    benchmark::DoNotOptimize(fitter.convert(view, target));
  }
}
BENCHMARK(fitCameraPicture)
    ->Args({1280, 720})
    ->Args({640, 480})
    ->Args({1920, 1080})
    ->Unit(benchmark::kMillisecond);

[[maybe_unused]] const bool areRegistered = [] {
  for (const CaptureEncoder& choice : captureEncoders()) {
    for (const Size size : sizes) {
      if (PictureEncoder::open(choice, settingsFor(size))) {
        const std::string name = "encode/" + std::string(choice.name) + "/" +
                                 std::to_string(size.width) + "x" + std::to_string(size.height);
        benchmark::RegisterBenchmark(name.c_str(), encode, choice, size)
            ->Iterations(picturesEach)
            ->MeasureProcessCPUTime()
            ->UseRealTime()
            ->Unit(benchmark::kMillisecond);
      }
    }
  }
  return true;
}();

}  // namespace
}  // namespace vesk::media
