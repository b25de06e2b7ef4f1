#pragma once

#include <algorithm>
#include <filesystem>
#include <stdexcept>
#include <string>

#include "media/I420Picture.h"
#include "media/VideoWriter.h"
#include "package/RecordingMeta.h"
#include "package/TemporaryDirectory.h"

namespace vesk::app::test {

/// Writes a recording of one grey picture, 128×72, with a zoom and a moving cursor in its first two
/// seconds, so that it exports quickly. Gives the path of the package.
inline std::filesystem::path makeSmallTake(const package::TemporaryDirectory& folder,
                                           double duration, std::int64_t fps = 60) {
  constexpr int width = 128;
  constexpr int height = 72;
  package::RecordingMeta meta;
  meta.captureWidth = width;
  meta.captureHeight = height;
  meta.duration = duration;
  meta.fps = fps;
  folder.put("small.recording/meta.json", package::encodeRecordingMeta(meta));
  std::string events = R"({"t":0.5,"type":"zoomIn","x":0.3,"y":0.4})"
                       "\n"
                       R"({"t":1.9,"type":"zoomOut","x":0.3,"y":0.4})"
                       "\n";
  for (int index = 0; index < 50; ++index) {
    const double share = index / 50.0;
    events += R"({"t":)" + std::to_string(2 * share) + R"(,"type":"move","x":)" +
              std::to_string(0.2 + 0.5 * share) + R"(,"y":0.4})" + "\n";
  }
  auto package = folder.put("small.recording/events.jsonl", events).parent_path();

  auto writer = media::VideoWriter::open(
      package / "screen.mov", {.width = width, .height = height, .fps = 60, .bitRate = 500'000});
  media::I420Picture picture(width, height);
  const auto& luma = picture.planes()[0];
  std::fill_n(luma.data, luma.stride * luma.height, std::uint8_t{120});
  if (!writer || !writer->write(picture, 0) || !writer->finish()) {
    throw std::runtime_error("cannot write the picture of the take");
  }
  return package;
}

}  // namespace vesk::app::test
