#pragma once

#include <filesystem>
#include <optional>

#include "media/VideoSettings.h"

namespace vesk::media {

/// What a file says of its first sound track.
struct SoundTrackInfo {
  double duration = 0;   ///< seconds on the file's time line; infinite where the file does not say
  bool fitsMp4 = false;  ///< an MP4 file can hold the track as it is
  bool fitsMov = false;  ///< a QuickTime file can
  bool operator==(const SoundTrackInfo&) const = default;

  [[nodiscard]] bool fits(Container container) const {
    return container == Container::mp4 ? fitsMp4 : fitsMov;
  }
};

/// Nothing for a file that cannot be read, or has no sound track that could be played.
[[nodiscard]] std::optional<SoundTrackInfo> soundTrackInfo(const std::filesystem::path& file);

}  // namespace vesk::media
