#include "media/SoundMix.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <span>
#include <utility>

#include "media/PeakLimiter.h"
#include "media/SoundReader.h"
#include "media/SoundWriter.h"

namespace vesk::media {
namespace {

constexpr std::int64_t blockLength = 4096;

std::int64_t samples(double seconds) {
  constexpr double most = 1e15;
  return std::llround(std::clamp(seconds * soundRate, 0.0, most));
}

/// A source on the mix's time line.
struct Voice {
  SoundReader reader;
  std::int64_t start = 0;
  std::int64_t end = 0;
  float gain = 1;

  /// Adds what falls into the block that starts at `position`. Blocks come one after the other.
  void addTo(std::span<StereoSample> block, std::int64_t position);
};

void Voice::addTo(std::span<StereoSample> block, std::int64_t position) {
  const std::int64_t from = std::max(start, position);
  const std::int64_t to = std::min(end, position + std::ssize(block));
  if (from >= to) {
    return;
  }
  std::vector<StereoSample> heard(static_cast<std::size_t>(to - from));
  reader.read(heard);
  auto place = block.begin() + (from - position);
  for (const StereoSample& sample : heard) {
    place->left += gain * sample.left;
    place->right += gain * sample.right;
    ++place;
  }
}

std::vector<Voice> openVoices(const std::vector<SoundMix::Source>& sources) {
  std::vector<Voice> voices;
  for (const SoundMix::Source& source : sources) {
    auto reader = SoundReader::open(source.clip.file);
    if (reader) {
      voices.push_back({.reader = *std::move(reader),
                        .start = samples(source.clip.start),
                        .end = samples(source.clip.start + source.clip.length),
                        .gain = source.gain});
    }
  }
  return voices;
}

}  // namespace

std::expected<void, MediaError> SoundMix::write(const std::filesystem::path& to) const {
  std::vector<Voice> voices = openVoices(sources);
  auto writer = SoundWriter::create(to);
  if (!writer) {
    return std::unexpected(std::move(writer.error()));
  }
  PeakLimiter limiter;
  std::vector<StereoSample> block;
  std::vector<StereoSample> limited;
  const std::int64_t total = samples(duration);
  for (std::int64_t position = 0; position < total; position += blockLength) {
    block.assign(static_cast<std::size_t>(std::min(blockLength, total - position)), {});
    for (Voice& voice : voices) {
      voice.addTo(block, position);
    }
    limited.clear();
    limiter.push(block, limited);
    if (auto written = writer->write(limited); !written) {
      return written;
    }
  }
  limited.clear();
  limiter.finish(limited);
  if (auto written = writer->write(limited); !written) {
    return written;
  }
  return writer->finish();
}

}  // namespace vesk::media
