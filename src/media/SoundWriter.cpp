#include "media/SoundWriter.h"

#include <utility>

#include "media/LibavError.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using Kind = MediaError::Kind;

constexpr SoundTrackSettings settings{.channels = 2, .bitRate = 192'000};

MediaError cannotEncodeSound(int code, const fs::path& file) {
  return code == AVERROR_ENCODER_NOT_FOUND
             ? MediaError{Kind::unsupported, "本机的 FFmpeg 没有 AAC 编码器"}
             : writingError(Kind::encodeFailed, code, file);
}

}  // namespace

std::expected<SoundWriter, MediaError> SoundWriter::create(const fs::path& file) {
  auto output = MovieOutput::create(file, "ipod", file);
  if (!output) {
    return std::unexpected(std::move(output.error()));
  }
  auto encoder = SoundEncoder::open(settings);
  if (!encoder) {
    return std::unexpected(cannotEncodeSound(encoder.error(), file));
  }
  SoundWriter writer(file, *std::move(output), *std::move(encoder));
  if (auto started = writer.start(); !started) {
    return std::unexpected(std::move(started.error()));
  }
  return writer;
}

SoundWriter::SoundWriter(fs::path file, MovieOutput output, SoundEncoder encoder)
    : file_(std::move(file)), output_(std::move(output)), encoder_(std::move(encoder)) {}

std::expected<void, MediaError> SoundWriter::start() {
  const AVCodecContext& codec = encoder_.codec();
  const CodecParametersPtr kind(avcodec_parameters_alloc());
  const int status = avcodec_parameters_from_context(kind.get(), &codec);
  if (status < 0) {
    return encoderFailed(status);
  }
  track_ = output_.addTrack(*kind, codec.time_base);
  return track_ == nullptr ? encoderFailed(AVERROR(ENOMEM)) : output_.start();
}

std::expected<void, MediaError> SoundWriter::write(std::span<const StereoSample> samples) {
  static_assert(sizeof(StereoSample) == 2 * sizeof(float));
  const auto* sides = reinterpret_cast<const float*>(samples.data());
  return store(encoder_.encode({sides, 2 * samples.size()}, ready_));
}

std::expected<void, MediaError> SoundWriter::finish() {
  if (auto stored = store(encoder_.finish(ready_)); !stored) {
    return stored;
  }
  return output_.finish();
}

/// Stores every packet that is ready, unless the encoder failed.
std::expected<void, MediaError> SoundWriter::store(int status) {
  for (const PacketPtr& packet : std::exchange(ready_, {})) {
    if (status < 0) {
      break;
    }
    packet->stream_index = track_->index;
    av_packet_rescale_ts(packet.get(), encoder_.codec().time_base, track_->time_base);
    const auto stored = output_.write(*packet);
    if (!stored) {
      return std::unexpected(stored.error());
    }
    status = *stored;
  }
  return status < 0 ? encoderFailed(status) : Outcome{};
}

std::unexpected<MediaError> SoundWriter::encoderFailed(int code) const {
  return std::unexpected(writingError(Kind::encodeFailed, code, file_));
}

}  // namespace vesk::media
