#include "media/PictureDuration.h"

#include <cmath>

#include "media/MovieInput.h"

namespace vesk::media {

std::optional<double> pictureDuration(const std::filesystem::path& file) {
  const auto input = openMovie(file);
  if (!input) {
    return std::nullopt;
  }
  const AVStream* track = firstVideoTrack(**input);
  if (track == nullptr || !std::isfinite(durationOf(*track))) {
    return std::nullopt;
  }
  return durationOf(*track);
}

}  // namespace vesk::media
