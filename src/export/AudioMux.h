#pragma once

#include <expected>
#include <filesystem>
#include <functional>

#include "export/ExportError.h"
#include "export/ExportSettings.h"
#include "media/MediaError.h"
#include "media/MovieRemux.h"
#include "media/SoundMix.h"
#include "package/RecordingProject.h"

namespace vesk::exporting {

/// Factors on the recorded loudness. Used are 0…2: less counts as 0, more as 2, and what is no
/// number as 1.
struct AudioGains {
  double system = 1;
  double mic = 1;
  bool operator==(const AudioGains&) const = default;
};

/// The work on files that muxAudio leaves to the media layer. An operation that this machine cannot
/// do at all fails with `unsupported`.
struct AudioOperations {
  using Outcome = std::expected<void, media::MediaError>;
  std::function<Outcome(const media::SoundMix&, const std::filesystem::path&)> mix =
      &media::SoundMix::write;
  std::function<Outcome(const media::MovieRemux&, const std::filesystem::path&)> remux =
      &media::MovieRemux::write;
};

/// Puts the recording's sound into the finished silent movie: the system's sound and the narration,
/// the latter where its first sample stands on the recording's clock. With both gains 1 the tracks
/// are copied as they are; otherwise they become one track that is encoded anew. The picture is
/// never encoded again.
///
/// No trouble with the sound loses the picture. A source that cannot be read is silent, a mix that
/// fails leaves the recorded loudness, and when the movie with sound cannot be written, the silent
/// one stays and the error is returned. The movie with sound takes the silent one's place in one
/// step; only when that step fails does a second file, the one with sound, remain beside it.
/// @param videoURL the silent movie.
[[nodiscard]] std::expected<void, ExportError> muxAudio(const package::RecordingProject& project,
                                                        const std::filesystem::path& videoURL,
                                                        ExportSettings::Format format,
                                                        const AudioGains& gains,
                                                        const AudioOperations& operations = {});

}  // namespace vesk::exporting
