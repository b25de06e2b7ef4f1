#include "media/Sightings.h"

#include <algorithm>
#include <cstddef>
#include <stdexcept>

#include "media/VideoReader.h"

namespace vesk::media {

std::ostream& operator<<(std::ostream& stream, const Sighting& sighting) {
  return stream << sighting.pts << " s, digest " << sighting.digest;
}

Sighting sightingOf(const VideoFrame& picture) {
  std::uint64_t digest = 14695981039346656037U;  // FNV-1a
  for (const VideoPlane& plane : picture.planes) {
    const int bytes = plane.width * bytesPerSample(picture.layout);
    for (int y = 0; y < plane.height; ++y) {
      const std::byte* row = plane.data + y * plane.stride;
      for (int x = 0; x < bytes; ++x) {
        digest = (digest ^ std::to_integer<std::uint64_t>(row[x])) * 1099511628211U;
      }
    }
  }
  return {picture.pts, digest};
}

std::vector<Sighting> sightingsIn(const std::filesystem::path& file) {
  auto reader = VideoReader::open(file);
  if (!reader) throw std::runtime_error(reader.error().message);
  std::vector<Sighting> sightings;
  for (auto picture = reader->next(); picture && *picture; picture = reader->next()) {
    sightings.push_back(sightingOf(**picture));
  }
  return sightings;
}

std::size_t indexAt(const std::vector<Sighting>& sightings, double time) {
  const auto after = std::ranges::upper_bound(sightings, time, {}, &Sighting::pts);
  return static_cast<std::size_t>(std::max<std::ptrdiff_t>(after - sightings.begin() - 1, 0));
}

}  // namespace vesk::media
