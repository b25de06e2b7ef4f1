#pragma once

#include <cstdint>
#include <filesystem>
#include <ostream>
#include <vector>

#include "media/VideoFrame.h"

namespace vesk::media {

/// A picture as the tests compare it: its time and a digest of its samples.
struct Sighting {
  double pts = 0;
  std::uint64_t digest = 0;
  bool operator==(const Sighting&) const = default;
};

std::ostream& operator<<(std::ostream& stream, const Sighting& sighting);

[[nodiscard]] Sighting sightingOf(const VideoFrame& picture);

/// All pictures of a movie, read from its beginning to its end.
[[nodiscard]] std::vector<Sighting> sightingsIn(const std::filesystem::path& file);

/// The index of the picture that stands at `time`: the last one at or before it, or else the first.
[[nodiscard]] std::size_t indexAt(const std::vector<Sighting>& sightings, double time);

}  // namespace vesk::media
