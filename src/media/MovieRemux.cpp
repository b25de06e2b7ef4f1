#include "media/MovieRemux.h"

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <limits>
#include <optional>
#include <utility>

#include "media/LibavError.h"
#include "media/LibavHandles.h"
#include "media/MovieInput.h"
#include "media/MovieOutput.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/mathematics.h>
}

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using Kind = MediaError::Kind;

constexpr std::int64_t endless = std::numeric_limits<std::int64_t>::max();
// What lies beyond these comes of damage. In seconds.
constexpr double longestStartUp = 1;  ///< of a sound encoder
constexpr double latestStamp = 1e8;

std::int64_t ticks(double seconds, AVRational tick) {
  const double count = std::round(seconds / av_q2d(tick));
  constexpr double most = 1e18;
  return count < most ? static_cast<std::int64_t>(count) : endless;
}

/// A track on its way into the new movie: holds the packet that is next to be written.
class Passage {
 public:
  /// @param start where the file's time line starts on the movie's, in seconds.
  /// @param length of the file's time line that is taken, in seconds.
  Passage(InputPtr input, const AVStream& source, double start, double length)
      : input_(std::move(input)),
        source_(&source),
        start_(start),
        end_(ticks(length, source.time_base)),
        earliest_(-ticks(longestStartUp, source.time_base)) {
    readOnly(source, *input_);
  }

  [[nodiscard]] bool isPicture() const {
    return source_->codecpar->codec_type == AVMEDIA_TYPE_VIDEO;
  }
  /// Makes the track in a movie that has not been started.
  [[nodiscard]] bool join(MovieOutput& movie);
  /// Reads the next packet; false when there is none.
  bool advance();
  /// When the packet is to be decoded on the movie's time line, in seconds.
  [[nodiscard]] double time() const;
  /// @return as of MovieOutput::write.
  std::expected<int, MediaError> writeTo(MovieOutput& movie);
  /// Whether the packets so far are all that the file's index lists.
  [[nodiscard]] bool isComplete() const { return packetCount_ >= source_->nb_frames; }

 private:
  [[nodiscard]] bool isPlausible() const;

  InputPtr input_;
  const AVStream* source_;
  double start_;
  // In ticks of the file:
  std::int64_t end_;
  std::int64_t earliest_;
  const AVStream* target_ = nullptr;
  PacketPtr packet_{av_packet_alloc()};
  std::int64_t packetCount_ = 0;
};

bool Passage::join(MovieOutput& movie) {
  AVStream* target = movie.addTrack(*source_->codecpar, source_->time_base);
  if (target == nullptr) {
    return false;
  }
  target_ = target;
  target->avg_frame_rate = source_->avg_frame_rate;
  if (!isPicture()) {
    target->codecpar->codec_tag = 0;  // the two containers have different ones for a codec
  }
  return true;
}

bool Passage::advance() {
  av_packet_unref(packet_.get());
  while (av_read_frame(input_.get(), packet_.get()) >= 0) {
    if (isPlausible() && packet_->pts >= end_) {
      return false;
    }
    if (isPlausible() && packet_->pts >= earliest_) {
      packet_->duration = std::min(packet_->duration, end_ - packet_->pts);
      ++packetCount_;
      return true;
    }
    av_packet_unref(packet_.get());
  }
  return false;
}

bool Passage::isPlausible() const {
  const double limit = latestStamp / av_q2d(source_->time_base);
  const auto isNear = [&](std::int64_t stamp) {
    return stamp != AV_NOPTS_VALUE && std::abs(static_cast<double>(stamp)) < limit;
  };
  return packet_->stream_index == source_->index && packet_->size > 0 && isNear(packet_->pts) &&
         isNear(packet_->dts);
}

double Passage::time() const {
  return start_ + static_cast<double>(packet_->dts) * av_q2d(source_->time_base);
}

std::expected<int, MediaError> Passage::writeTo(MovieOutput& movie) {
  const std::int64_t shift = ticks(start_, target_->time_base);
  av_packet_rescale_ts(packet_.get(), source_->time_base, target_->time_base);
  packet_->pts += shift;
  packet_->dts += shift;
  packet_->stream_index = target_->index;
  packet_->pos = -1;
  return movie.write(*packet_);
}

std::expected<Passage, MediaError> openPicture(const fs::path& file) {
  auto input = openMovie(file);
  if (!input) {
    return std::unexpected(std::move(input.error()));
  }
  const AVStream* track = firstVideoTrack(**input);
  if (track == nullptr) {
    return std::unexpected(noVideoTrackError(file));
  }
  return Passage(*std::move(input), *track, 0, std::numeric_limits<double>::infinity());
}

std::optional<Passage> openSound(const SoundClip& clip, Container container) {
  auto input = openMovie(clip.file);
  if (!input) {
    return std::nullopt;
  }
  const AVStream* track = firstSoundTrack(**input);
  if (track == nullptr || !canHold(container, *track->codecpar) || clip.length <= 0) {
    return std::nullopt;
  }
  return Passage(*std::move(input), *track, clip.start, clip.length);
}

/// The picture and the sounds of which there is something to be heard, each at its first packet.
std::expected<std::vector<Passage>, MediaError> openTracks(const MovieRemux& remux) {
  auto picture = openPicture(remux.picture);
  if (!picture) {
    return std::unexpected(std::move(picture.error()));
  }
  if (!picture->advance()) {
    return std::unexpected(readingError(Kind::decodeFailed, AVERROR_EOF, remux.picture));
  }
  std::vector<Passage> tracks;
  tracks.push_back(*std::move(picture));
  for (const SoundClip& clip : remux.sounds) {
    auto sound = openSound(clip, remux.container);
    if (sound && sound->advance()) {
      tracks.push_back(*std::move(sound));
    }
  }
  return tracks;
}

/// Writes the packets of all tracks in the order of their decoding times.
std::expected<void, MediaError> copyPackets(std::vector<Passage>& tracks, MovieOutput& movie,
                                            const fs::path& picture) {
  std::vector<Passage*> waiting;
  waiting.reserve(tracks.size());
  for (Passage& track : tracks) {
    waiting.push_back(&track);
  }
  while (!waiting.empty()) {
    const auto next = std::ranges::min_element(waiting, {}, &Passage::time);
    Passage& track = **next;
    const auto status = track.writeTo(movie);
    if (!status) {
      return std::unexpected(status.error());
    }
    // A packet of a damaged sound that no movie can hold is left out.
    if (*status < 0 && track.isPicture()) {
      return std::unexpected(writingError(Kind::writeFailed, *status, picture));
    }
    if (!track.advance()) {
      waiting.erase(next);
    }
  }
  return {};
}

}  // namespace

std::expected<void, MediaError> MovieRemux::write(const fs::path& to) const {
  auto tracks = openTracks(*this);
  if (!tracks) {
    return std::unexpected(std::move(tracks.error()));
  }
  auto movie = MovieOutput::create(to, muxerName(container), picture);
  if (!movie) {
    return std::unexpected(std::move(movie.error()));
  }
  if (!std::ranges::all_of(*tracks, [&](Passage& track) { return track.join(*movie); })) {
    return std::unexpected(writingError(Kind::writeFailed, AVERROR(ENOMEM), picture));
  }
  if (auto started = movie->start(); !started) {
    return started;
  }
  if (auto copied = copyPackets(*tracks, *movie, picture); !copied) {
    return copied;
  }
  if (!tracks->front().isComplete()) {
    return std::unexpected(readingError(Kind::decodeFailed, AVERROR_EOF, picture));
  }
  return movie->finish();
}

}  // namespace vesk::media
