#include <benchmark/benchmark.h>

#include <cstdint>
#include <filesystem>
#include <random>
#include <vector>

#include "media/I420Picture.h"
#include "media/PictureConverter.h"
#include "media/VideoWriter.h"

namespace vesk::media {
namespace {

constexpr int width = 1920;
constexpr int height = 1080;

std::vector<std::uint8_t> noise() {
  std::mt19937 random(1);
  std::vector<std::uint8_t> bytes(std::size_t{4} * width * height);
  for (auto& byte : bytes) {
    byte = static_cast<std::uint8_t>(random());
  }
  return bytes;
}

BgraView viewOf(const std::vector<std::uint8_t>& bytes) {
  return {bytes.data(), std::ptrdiff_t{4} * width, width, height};
}

void convertWholePicture(benchmark::State& state) {
  const auto bytes = noise();
  I420Picture picture(width, height);
  for ([[maybe_unused]] auto _ : state) {
    convertToI420(viewOf(bytes), picture);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(convertWholePicture)->Unit(benchmark::kMicrosecond);

void convertCursorSizedPart(benchmark::State& state) {
  const auto bytes = noise();
  I420Picture picture(width, height);
  for ([[maybe_unused]] auto _ : state) {
    convertToI420(viewOf(bytes), {800, 500, 64, 64}, picture);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(convertCursorSizedPart)->Unit(benchmark::kMicrosecond);

void copyPicture(benchmark::State& state) {
  const I420Picture source(width, height);
  I420Picture target(width, height);
  for ([[maybe_unused]] auto _ : state) {
    target.copyFrom(source);
    benchmark::ClobberMemory();
  }
}
BENCHMARK(copyPicture)->Unit(benchmark::kMicrosecond);

/// What sending the picture before again costs, the container being the argument.
void writeAStillPicture(benchmark::State& state) {
  const auto file = std::filesystem::temp_directory_path() / "vesk-media-bench.tmp";
  auto writer = VideoWriter::open(file, {.container = static_cast<Container>(state.range(0)),
                                         .width = width,
                                         .height = height,
                                         .fps = 60,
                                         .bitRate = 9'953'280});
  if (!writer) {
    state.SkipWithError(writer.error().message.c_str());
    return;
  }
  const I420Picture picture(width, height);
  std::int64_t index = 0;
  for ([[maybe_unused]] auto _ : state) {
    if (!writer->write(picture, index++)) {
      state.SkipWithError("写入失败");
      return;
    }
  }
}
BENCHMARK(writeAStillPicture)
    ->Arg(static_cast<int>(Container::mp4))
    ->Arg(static_cast<int>(Container::mov))
    ->Unit(benchmark::kMillisecond)
    ->UseRealTime();

}  // namespace
}  // namespace vesk::media
