#include "media/SoundTrackInfo.h"

#include "media/MovieInput.h"
#include "media/MovieOutput.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace vesk::media {

std::optional<SoundTrackInfo> soundTrackInfo(const std::filesystem::path& file) {
  const auto input = openMovie(file);
  if (!input) {
    return std::nullopt;
  }
  const AVStream* track = firstSoundTrack(**input);
  if (track == nullptr) {
    return std::nullopt;
  }
  const AVCodecParameters& kind = *track->codecpar;
  return SoundTrackInfo{.duration = durationOf(*track),
                        .fitsMp4 = canHold(Container::mp4, kind),
                        .fitsMov = canHold(Container::mov, kind)};
}

}  // namespace vesk::media
