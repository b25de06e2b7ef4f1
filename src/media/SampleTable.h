#pragma once

#include <cstdint>
#include <vector>

namespace vesk::media {

/// What a movie file holds of one track: when each sample (a picture, or a packet of sound) is
/// shown, and where it lies. Times are in ticks of the track.
struct SampleTable {
  struct Sample {
    std::int64_t time = 0;
    std::uint32_t duration = 0;
    std::uint32_t size = 0;  ///< bytes
    bool isKey = false;
    bool operator==(const Sample&) const = default;
  };
  /// Samples that lie one after another in the file.
  struct Chunk {
    std::uint64_t position = 0;  ///< in the file, of the first sample
    std::uint32_t sampleCount = 0;
    bool operator==(const Chunk&) const = default;
  };

  std::uint32_t track = 0;      ///< the file's number for it
  std::vector<Sample> samples;  ///< their times rise
  std::vector<Chunk> chunks;    ///< of all samples, in order

  [[nodiscard]] std::int64_t end() const {
    return samples.empty() ? 0 : samples.back().time + samples.back().duration;
  }
};

}  // namespace vesk::media
