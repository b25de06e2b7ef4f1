#pragma once

#include <filesystem>

namespace vesk::media {

/// The first sound track of a file and its place in a movie.
struct SoundClip {
  std::filesystem::path file;
  double start = 0;   ///< of the file's time line on the movie's, in seconds, at least 0
  double length = 0;  ///< from the start on, in seconds; what comes later is left out
  bool operator==(const SoundClip&) const = default;
};

}  // namespace vesk::media
