// Measures how well the streams of a take agree: again and again the mouse clicks, and with the
// click the screen flashes, what is played and what the microphone hears beeps, and the camera sees
// white. Prints by how much each stream's record of it is later than the moment itself, and than
// the flash on the screen.
// Usage: take_agreement [number of flashes, 50]
#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <functional>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "capture/Clock.h"
#include "capture/PointerSampler.h"
#include "media/TestSound.h"
#include "media/VideoReader.h"
#include "take/TakeStage.h"

namespace {

using namespace vesk;
using namespace std::chrono_literals;
using media::HostTime;

constexpr HostTime length = 200ms;
constexpr HostTime notice = 300ms;  ///< so that sound that is made in advance has the flash in it
constexpr std::uint32_t white = 0xFFFFFF;
constexpr std::uint32_t black = 0x000000;
constexpr double beepTone = 1000;
constexpr double soundRate = 48'000;

HostTime now() {
  return std::chrono::duration_cast<HostTime>(
      std::chrono::duration<double>(capture::MonotonicClock{}.now()));
}

/// When the latest flash begins; shared with the devices' threads.
class Flash {
 public:
  bool isOn(HostTime time) const {
    const auto begin = begin_.load();
    return time >= begin && time < begin + length;
  }
  void plan(HostTime begin) { begin_ = begin; }

 private:
  std::atomic<HostTime> begin_{HostTime::max() - length};
};

capture::pipewire::test::Waveform beepOf(const Flash& flash) {
  return [&flash, tone = capture::pipewire::test::tone(beepTone)](HostTime time) {
    return flash.isOn(time) ? tone(time) : 0.0F;
  };
}

/// The times at which a picture begins to be bright.
std::vector<double> brightenings(const std::filesystem::path& movie) {
  std::vector<double> times;
  auto reader = media::VideoReader::open(movie);
  bool wasBright = true;
  while (reader) {
    const auto frame = reader->next();
    if (!frame || !*frame) break;
    const auto& luma = (*frame)->planes[0];
    const auto middle = (luma.height / 2) * luma.stride + luma.width / 2;
    const bool isBright = std::to_integer<int>(luma.data[middle]) > 128;
    if (isBright && !wasBright) times.push_back((*frame)->pts);
    wasBright = isBright;
  }
  return times;
}

/// The times at which a sound begins to be loud.
std::vector<double> onsets(const std::vector<media::StereoSample>& sound) {
  constexpr float loud = 0.05F;
  constexpr std::size_t quietFor = 4800;
  std::vector<double> times;
  std::size_t lastLoud = 0;
  for (std::size_t i = 0; i < sound.size(); ++i) {
    if (std::abs(sound[i].left) < loud) continue;
    if (i - lastLoud > quietFor) times.push_back(static_cast<double>(i) / soundRate);
    lastLoud = i;
  }
  return times;
}

std::vector<double> shifted(std::vector<double> times, double offset) {
  for (double& time : times) time += offset;
  return times;
}

/// How much later than each of these moments its nearest record is.
std::vector<double> differences(const std::vector<double>& moments,
                                const std::vector<double>& records) {
  std::vector<double> result;
  for (const double moment : moments) {
    std::optional<double> nearest;
    for (const double record : records) {
      if (!nearest || std::abs(record - moment) < std::abs(*nearest)) nearest = record - moment;
    }
    if (nearest && std::abs(*nearest) < 0.4) result.push_back(*nearest);
  }
  std::ranges::sort(result);
  return result;
}

void print(std::string_view name, const std::vector<double>& sorted) {
  if (sorted.empty()) {
    fmt::print("{:<28} none found\n", name);
    return;
  }
  const auto at = [&](double share) {
    return 1000 * sorted[static_cast<std::size_t>(share * static_cast<double>(sorted.size() - 1))];
  };
  fmt::print("{:<28} {:3} found   least {:7.2f}   median {:7.2f}   most {:7.2f} ms\n", name,
             sorted.size(), at(0), at(0.5), at(1));
}

/// How late the sampler's calls are, in seconds, against a grid that begins with the earliest.
std::vector<double> latenesses(std::vector<double> calls) {
  constexpr double interval = 1.0 / 120;
  std::ranges::sort(calls);
  std::vector<double> late;
  double earliest = 1;
  for (const double call : calls) {
    late.push_back(std::fmod(call - calls.front() + interval / 2, interval) - interval / 2);
    earliest = std::min(earliest, late.back());
  }
  for (double& value : late) value -= earliest;
  std::ranges::sort(late);
  return late;
}

/// Lets it flash, and gives the moments, on the clock.
std::vector<double> flashAway(take::TakeStage& stage, Flash& flash, int count) {
  const auto window = stage.painter_.open(
      {.x = 0, .y = 0, .width = take::TakeStage::width, .height = take::TakeStage::height}, black);
  const media::PixelRect all{
      .x = 0, .y = 0, .width = take::TakeStage::width, .height = take::TakeStage::height};
  stage.user_.movePointer({.x = 640, .y = 360});
  stage.wait(1s);
  std::vector<double> moments;
  for (int i = 0; i < count; ++i) {
    const auto begin = now() + notice;
    flash.plan(begin);
    std::this_thread::sleep_for(begin - now());
    stage.user_.clickButton(1);
    stage.painter_.draw(window, all, white);
    moments.push_back(media::secondsOf(begin));
    std::this_thread::sleep_for(length);
    stage.painter_.draw(window, all, black);
    // Not in step with the frames.
    stage.wait(300ms + i * 7ms % 50ms);
  }
  stage.wait(500ms);
  return moments;
}

int measure(int count) {
  Flash flash;
  take::TakeStage stage{{.played = beepOf(flash),
                         .spoken = beepOf(flash),
                         .seen = [&flash](std::span<std::uint8_t> bytes, HostTime taken) {
                           std::ranges::fill(bytes, flash.isOn(taken) ? 255 : 16);
                         }}};
  if (!stage.record({.captureMicrophone = true,
                     .captureSystemAudio = true,
                     .scope = {package::CaptureScope::Display{stage.displayID()}},
                     .captureCamera = true})) {
    fmt::print("the take does not start\n");
    return EXIT_FAILURE;
  }
  std::vector<double> samples;
  auto sampler =
      std::make_unique<capture::PointerSampler>([&samples](double at) { samples.push_back(at); });
  const auto onClock = flashAway(stage, flash, count);
  sampler.reset();
  const auto take = stage.finish() ? stage.project() : std::nullopt;
  if (!take || !take->meta.firstFramePTS) {
    fmt::print("the take does not end\n");
    return EXIT_FAILURE;
  }
  const double origin = *take->meta.firstFramePTS;
  const auto moments = shifted(onClock, -origin);
  std::vector<double> clicks;
  for (const auto& event : take->events) {
    if (event.type == package::RecordedEvent::Kind::click) clicks.push_back(event.t);
  }
  const auto pictures = brightenings(take->screenURL());
  const auto camera = shifted(brightenings(take->url / "camera.mov"),
                              take->meta.cameraFirstFramePTS.value_or(0) - origin);
  const auto played = onsets(media::played(take->screenURL()));
  const auto spoken = shifted(onsets(media::played(take->url / "mic.m4a")),
                              take->meta.micFirstSamplePTS.value_or(0) - origin);
  const auto& report = *stage.session().lastCaptureReport();
  fmt::print("{} flashes; {} frames written, {} idle, {} dropped\n", count, report.completeFrames,
             report.idleFrames, report.droppedFrames);
  const auto late = latenesses(std::move(samples));
  fmt::print(
      "sampler, late by: median {:.2f}, 99 in 100 under {:.2f}, most {:.2f} ms of {} calls\n",
      1000 * late[late.size() / 2], 1000 * late[late.size() * 99 / 100], 1000 * late.back(),
      late.size());
  fmt::print("later than the moment:\n");
  print("  click in the log", differences(moments, clicks));
  print("  picture", differences(moments, pictures));
  print("  what was played", differences(moments, played));
  print("  microphone", differences(moments, spoken));
  print("  camera", differences(moments, camera));
  fmt::print("later than the picture:\n");
  print("  click in the log", differences(pictures, clicks));
  print("  what was played", differences(pictures, played));
  print("  microphone", differences(pictures, spoken));
  print("  camera", differences(pictures, camera));
  return EXIT_SUCCESS;
}

}  // namespace

int main(int argc, char** argv) {
  return measure(argc > 1 ? std::max(1, std::atoi(argv[1])) : 50);  // NOLINT: any number will do
}
