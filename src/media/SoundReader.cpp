#include "media/SoundReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <utility>

#include "media/LibavError.h"
#include "media/MovieInput.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/mathematics.h>
}

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using Kind = MediaError::Kind;

constexpr AVRational soundTick{1, soundRate};
/// Some writers round stamps to 1/600 s: what strays less than this from its place follows on.
constexpr std::int64_t jitter = soundRate / 500;
/// Stamps beyond it come of damage.
constexpr std::int64_t latestPosition = std::int64_t{1} << 42;

std::expected<CodecPtr, MediaError> openDecoder(const AVStream& track, const fs::path& file) {
  const AVCodec* codec = avcodec_find_decoder(track.codecpar->codec_id);
  if (codec == nullptr) {
    return std::unexpected(MediaError{
        Kind::unsupported,
        fmt::format("本机的 FFmpeg 不能解码 “{}” 的音频格式 {}", file.filename().string(),
                    avcodec_get_name(track.codecpar->codec_id))});
  }
  CodecPtr decoder(avcodec_alloc_context3(codec));
  if (decoder == nullptr) {
    return std::unexpected(readingError(Kind::decodeFailed, AVERROR(ENOMEM), file));
  }
  int status = avcodec_parameters_to_context(decoder.get(), track.codecpar);
  if (status >= 0) {
    decoder->pkt_timebase = track.time_base;
    decoder->thread_count = 1;
    status = avcodec_open2(decoder.get(), codec, nullptr);
  }
  if (status < 0) {
    return std::unexpected(readingError(Kind::decodeFailed, status, file));
  }
  return decoder;
}

}  // namespace

std::expected<SoundReader, MediaError> SoundReader::open(const fs::path& file) {
  auto input = openMovie(file);
  if (!input) {
    return std::unexpected(std::move(input.error()));
  }
  AVStream* track = firstSoundTrack(**input);
  if (track == nullptr) {
    return std::unexpected(
        MediaError{Kind::openFailed, fmt::format("“{}” 里没有声音", file.filename().string())});
  }
  auto decoder = openDecoder(*track, file);
  if (!decoder) {
    return std::unexpected(std::move(decoder.error()));
  }
  readOnly(*track, **input);
  return SoundReader(*std::move(input), track, *std::move(decoder));
}

SoundReader::SoundReader(InputPtr input, AVStream* track, CodecPtr decoder)
    : input_(std::move(input)),
      track_(track),
      decoder_(std::move(decoder)),
      packet_(av_packet_alloc()),
      frame_(av_frame_alloc()) {}

void SoundReader::read(std::span<StereoSample> out) {
  std::ranges::fill(out, StereoSample{});
  const std::int64_t start = position_;
  const std::int64_t end = start + std::ssize(out);
  while (true) {
    const std::int64_t from = std::max(position_, chunkStart_);
    const std::int64_t to = std::min(end, chunkEnd());
    if (from < to) {
      std::copy(chunk_.begin() + (from - chunkStart_), chunk_.begin() + (to - chunkStart_),
                out.begin() + (from - start));
      position_ = to;
    }
    const bool chunkReachesOn = chunkStart_ >= end || chunkEnd() >= end;
    if (chunkReachesOn || !fetch()) {
      break;
    }
  }
  position_ = end;
}

/// Puts the track's next samples into the chunk; false at the end.
bool SoundReader::fetch() {
  chunkStart_ = chunkEnd();
  chunk_.clear();
  while (chunk_.empty()) {
    frameWaits_ = frameWaits_ || decodeFrame();
    if (frameWaits_ && frameContinuesRun()) {
      takeFrame();
      continue;
    }
    resampler_.finish(chunk_);
    if (!frameWaits_) {
      break;
    }
    if (chunk_.empty()) {
      startRun();
    }
  }
  return !chunk_.empty();
}

void SoundReader::startRun() {
  frameWaits_ = resampler_.start(*frame_);
  runStart_ = framePosition();
  runTaken_ = 0;
  chunkStart_ = runStart_;
}

void SoundReader::takeFrame() {
  resampler_.push(*frame_, chunk_);
  runTaken_ += frame_->nb_samples;
  frameWaits_ = false;
}

bool SoundReader::frameContinuesRun() const {
  return resampler_.continues(*frame_) && std::abs(framePosition() - runEnd()) <= jitter;
}

/// The next frame that can be made sense of; false at the end.
bool SoundReader::decodeFrame() {
  while (true) {
    const int status = avcodec_receive_frame(decoder_.get(), frame_.get());
    if (status >= 0) {
      if (isPlausible()) {
        return true;
      }
    } else if (status == AVERROR_EOF || !feedDecoder()) {
      return false;
    }
  }
}

/// Gives the decoder the track's next packet, or once the signal to empty itself.
bool SoundReader::feedDecoder() {
  while (av_read_frame(input_.get(), packet_.get()) >= 0) {
    const bool isTaken = packet_->stream_index == track_->index &&
                         avcodec_send_packet(decoder_.get(), packet_.get()) >= 0;
    av_packet_unref(packet_.get());
    if (isTaken) {
      return true;
    }
  }
  return avcodec_send_packet(decoder_.get(), nullptr) >= 0;
}

bool SoundReader::isPlausible() const {
  const std::int64_t position = framePosition();
  return isSoundRate(frame_->sample_rate) && position > -latestPosition &&
         position < latestPosition;
}

/// Where the frame's first sample stands; without a stamp it follows on.
std::int64_t SoundReader::framePosition() const {
  return frame_->pts == AV_NOPTS_VALUE ? runEnd()
                                       : av_rescale_q(frame_->pts, track_->time_base, soundTick);
}

std::int64_t SoundReader::runEnd() const {
  return runStart_ + av_rescale_q(runTaken_, {1, std::max(frame_->sample_rate, 1)}, soundTick);
}

std::int64_t SoundReader::chunkEnd() const {
  return chunkStart_ + std::ssize(chunk_);
}

}  // namespace vesk::media
