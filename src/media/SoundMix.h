#pragma once

#include <expected>
#include <filesystem>
#include <vector>

#include "media/MediaError.h"
#include "media/SoundClip.h"

namespace vesk::media {

/// Several sounds made into one: AAC (low complexity) at 192 kbit/s, stereo, 48,000 samples a
/// second.
struct SoundMix {
  struct Source {
    SoundClip clip;
    float gain = 1;  ///< factor, at least 0
    bool operator==(const Source&) const = default;
  };

  std::vector<Source> sources;
  double duration = 0;  ///< of the mix in seconds, positive
  bool operator==(const SoundMix&) const = default;

  /// Writes the mix to the new file `to`, an MPEG-4 file. Each source stands to the sample where
  /// its clip says and is silent elsewhere; where the sum would exceed full scale it is held
  /// below by a PeakLimiter. The memory that this takes does not depend on the length. A source
  /// that cannot be read is silent, one that breaks off is heard as far as it goes. After a failure
  /// the new file is removed.
  [[nodiscard]] std::expected<void, MediaError> write(const std::filesystem::path& to) const;
};

}  // namespace vesk::media
