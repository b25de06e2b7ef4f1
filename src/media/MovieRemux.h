#pragma once

#include <expected>
#include <filesystem>
#include <vector>

#include "media/MediaError.h"
#include "media/SoundClip.h"
#include "media/VideoSettings.h"

namespace vesk::media {

/// A movie put together from tracks that are there already. Their packets are copied as they are,
/// the ones with which a sound encoder starts up included; an edit list hides what those decode to
/// before the movie's beginning.
struct MovieRemux {
  std::filesystem::path picture;  ///< the movie whose first video track is taken whole
  std::vector<SoundClip> sounds;  ///< in the order of their tracks, which play together
  Container container = Container::mp4;
  bool operator==(const MovieRemux&) const = default;

  /// Writes the movie to the new file `to`, its index at the front. Holds one packet of each track
  /// at a time. A sound file that cannot be read is left out, one that breaks off or is damaged is
  /// taken as far as it goes, and so is a track of which no packet falls into its length; whatever
  /// befalls the picture or the new file is an error. Errors of writing name `picture`, as the new
  /// movie is to take its place. After a failure the new file is removed.
  [[nodiscard]] std::expected<void, MediaError> write(const std::filesystem::path& to) const;
};

}  // namespace vesk::media
