#include "FigureTakes.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <fstream>
#include <random>
#include <stdexcept>
#include <string>

#include "package/EditDocument.h"
#include "package/RecordedEvent.h"
#include "package/RecordingMeta.h"

namespace vesk::bench {
namespace {

namespace fs = std::filesystem;
using package::RecordedEvent;

fs::path makePackage(const fs::path& folder, const std::string& name, double seconds, int width,
                     int height) {
  fs::path package = folder / (name + ".recording");
  fs::create_directories(package);
  package::RecordingMeta meta;
  meta.captureWidth = width;
  meta.captureHeight = height;
  meta.duration = seconds;
  meta.hasSystemAudio = true;
  std::ofstream(package / "meta.json") << package::encodeRecordingMeta(meta);
  std::ofstream(package / "events.jsonl") << "";
  return package;
}

/// Runs the ffmpeg program.
void makeMovie(const fs::path& file, const std::string& sources, const std::string& encoding) {
  const std::string command = fmt::format("ffmpeg -v error -y {} {} -c:a aac -b:a 128k '{}'",
                                          sources, encoding, file.string());
  if (std::system(command.c_str()) != 0) {  // NOLINT: a tool of ours, with texts of ours
    throw std::runtime_error("ffmpeg could not make " + file.string());
  }
}

}  // namespace

fs::path makeHourLongTake(const fs::path& folder) {
  constexpr int length = 3600;
  constexpr int movesPerSecond = 120;
  constexpr int clicks = 2000;
  constexpr int segments = 300;
  fs::path package = makePackage(folder, "hour", length, 1280, 720);
  std::mt19937_64 random(20261121);
  std::normal_distribution<double> step(0, 0.002);
  std::ofstream log(package / "events.jsonl");
  RecordedEvent event;
  event.x = 0.5;
  event.y = 0.5;
  int nextClick = 0;
  for (int index = 0; index < length * movesPerSecond; ++index) {
    event.t = static_cast<double>(index) / movesPerSecond;
    event.type = RecordedEvent::Kind::move;
    event.button.reset();
    event.x = std::clamp(*event.x + step(random), 0.0, 1.0);
    event.y = std::clamp(*event.y + step(random), 0.0, 1.0);
    log << package::encodeRecordedEvent(event) << '\n';
    if (nextClick < clicks && event.t >= nextClick * static_cast<double>(length) / clicks) {
      event.type = RecordedEvent::Kind::click;
      event.button = RecordedEvent::Button::left;
      log << package::encodeRecordedEvent(event) << '\n';
      ++nextClick;
    }
  }
  package::EditDocument document;
  document.segments.emplace();
  for (int index = 0; index < segments; ++index) {
    const double start = static_cast<double>(length) / segments * index;
    document.segments->push_back(
        {.id = fmt::format("s{}", index), .start = start, .end = start + 6});
  }
  if (!document.save(package)) throw std::runtime_error("no segments could be written");
  makeMovie(package / "screen.mov",
            fmt::format("-f lavfi -i testsrc=size=1280x720:rate=1:duration={0} "
                        "-f lavfi -i sine=frequency=300:sample_rate=48000:duration={0}",
                        length),
            "-c:v libx264 -preset ultrafast -pix_fmt yuv420p -g 10");
  return package;
}

fs::path makeFlashingTake(const fs::path& folder, double seconds) {
  fs::path package = makePackage(folder, "flashes", seconds, 640, 360);
  makeMovie(package / "screen.mov",
            fmt::format("-f lavfi -i \"color=black:s=640x360:r=60:d={0},"
                        "drawbox=t=fill:color=white:enable='lt(mod(t,2),0.1)'\" "
                        "-f lavfi -i \"aevalsrc='if(lt(mod(t,2),0.1),0.5*sin(2*PI*1000*t),0)'"
                        ":s=48000:d={0}\"",
                        seconds),
            "-c:v libx264 -preset ultrafast -pix_fmt yuv420p -g 120");
  return package;
}

}  // namespace vesk::bench
