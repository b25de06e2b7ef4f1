#pragma once

#include <expected>
#include <filesystem>

#include "media/LibavHandles.h"
#include "media/MediaError.h"

struct AVStream;

namespace vesk::media {

/// Opens a QuickTime or MP4 file and looks into its tracks. Opens that one local, regular file and
/// nothing that it refers to.
[[nodiscard]] std::expected<InputPtr, MediaError> openMovie(const std::filesystem::path& file);

/// The first track with moving pictures, or null; a cover picture is none.
[[nodiscard]] AVStream* firstVideoTrack(const AVFormatContext& input);

/// The first track with sound, or null.
[[nodiscard]] AVStream* firstSoundTrack(const AVFormatContext& input);

/// How long a track lasts on the file's time line, in seconds; infinite where the file does not
/// say.
[[nodiscard]] double durationOf(const AVStream& track);

/// Whether sound comes with so many samples a second; the rest only damage explains.
[[nodiscard]] constexpr bool isSoundRate(int samplesPerSecond) {
  return samplesPerSecond >= 1'000 && samplesPerSecond <= 768'000;
}

/// Leaves the packets of all other tracks out of what is read from now on.
void readOnly(const AVStream& track, AVFormatContext& input);

}  // namespace vesk::media
