#include "media/SoundReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <numeric>
#include <utility>

#include "media/LibavError.h"
#include "media/MovieInput.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/mathematics.h>
#include <libavutil/samplefmt.h>
}

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using Kind = MediaError::Kind;

constexpr AVRational soundTick{1, soundRate};
/// Stamps beyond it come of damage.
constexpr std::int64_t latestPosition = std::int64_t{1} << 42;
/// What a decoder needs to come to itself: Opus 80 ms, AAC a frame, MP3 what its reservoir spans.
constexpr std::int64_t runUp = soundRate / 4;
/// Louder is no sound. Above full scale a factor of a thousand, which no gain brings back.
constexpr float loudest = 1000;

/// After so many samples of a track a sample at soundRate falls on one of its own again.
std::int64_t gridPeriod(int rate) {
  return rate / std::gcd(rate, soundRate);
}

float readable(float value) {
  return std::abs(value) <= loudest ? value : 0;  // what is no number compares as greater
}

/// Drops samples from the start of a frame, fewer than it holds.
void dropStart(AVFrame& frame, int count, AVRational tick) {
  const auto format = static_cast<AVSampleFormat>(frame.format);
  const bool isPlanar = av_sample_fmt_is_planar(format) != 0;
  const int planes = isPlanar ? frame.ch_layout.nb_channels : 1;
  const std::ptrdiff_t channelsInPlane = isPlanar ? 1 : frame.ch_layout.nb_channels;
  for (int plane = 0; plane < planes; ++plane) {
    frame.extended_data[plane] += count * channelsInPlane * av_get_bytes_per_sample(format);
  }
  frame.nb_samples -= count;
  frame.pts += av_rescale_q(count, {1, frame.sample_rate}, tick);
}

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
      std::transform(chunk_.begin() + (from - chunkStart_), chunk_.begin() + (to - chunkStart_),
                     out.begin() + (from - start), [](const StereoSample& sample) {
                       return StereoSample{readable(sample.left), readable(sample.right)};
                     });
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
  run_ = {.runStart = framePosition(), .taken = 0};
  if (isResuming_) {
    isResuming_ = false;
    resumeRun();
  }
  chunkStart_ = run_.position(frame_->sample_rate);
  frameWaits_ = !isResuming_ && resampler_.start(*frame_);
}

/// Goes on with the run that the frame at hand is part of, from a sample on from which resampling
/// gives the same as from the run's start; that may lie behind this frame.
void SoundReader::resumeRun() {
  const auto place = index_ ? index_->placeOf(frame_->pts) : std::nullopt;
  if (!place || frame_->sample_rate != track_->codecpar->sample_rate) {
    return;
  }
  run_ = *place;
  const std::int64_t period = gridPeriod(frame_->sample_rate);
  const std::int64_t surplus = (period - run_.taken % period) % period;
  isResuming_ = surplus >= frame_->nb_samples;
  if (surplus > 0 && !isResuming_) {
    dropStart(*frame_, static_cast<int>(surplus), track_->time_base);
    run_.taken += surplus;
  }
}

void SoundReader::takeFrame() {
  resampler_.push(*frame_, chunk_);
  run_.taken += frame_->nb_samples;
  frameWaits_ = false;
}

bool SoundReader::frameContinuesRun() const {
  return resampler_.continues(*frame_) && run_.goesOnAt(framePosition(), frame_->sample_rate);
}

void SoundReader::seek(std::int64_t position) {
  position_ = std::clamp(position, std::int64_t{0}, latestPosition);
  learnStart();
  const std::int64_t wholeGrid = soundRate / std::gcd(track_->codecpar->sample_rate, soundRate);
  const auto stamp = index_ ? index_->stampAt(position_ - runUp - wholeGrid) : std::nullopt;
  moveTo(stamp.value_or(beginning));
}

/// Where all places count from: decodes to the first frame if nothing has been read so far.
void SoundReader::learnStart() {
  if (!index_ && !frameWaits_) {
    frameWaits_ = decodeFrame();
  }
}

/// Starts to decode from the packet at this stamp on.
void SoundReader::moveTo(std::int64_t stamp) {
  firstStamp_ = stamp;
  const AVIndexEntry* first = avformat_index_get_entry(track_, 0);
  const std::int64_t earliest = first == nullptr ? 0 : first->timestamp;
  av_seek_frame(input_.get(), track_->index, std::max(stamp, earliest), AVSEEK_FLAG_BACKWARD);
  restartDecoder();
  resampler_.finish(chunk_);
  chunk_.clear();
  chunkStart_ = 0;
  frameWaits_ = false;
  isResuming_ = true;
}

/// The next frame that can be made sense of; false at the end.
bool SoundReader::decodeFrame() {
  while (true) {
    const int status = avcodec_receive_frame(decoder_.get(), frame_.get());
    if (status >= 0) {
      if (isPlausible()) {
        if (!index_ && frame_->pts != AV_NOPTS_VALUE) {
          index_.emplace(*track_, frame_->pts, frame_->nb_samples);
        }
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
    const bool isTaken = packet_->stream_index == track_->index && !isTooEarly() &&
                         avcodec_send_packet(decoder_.get(), packet_.get()) >= 0;
    av_packet_unref(packet_.get());
    if (isTaken) {
      return true;
    }
  }
  return avcodec_send_packet(decoder_.get(), nullptr) >= 0;
}

/// At the beginning of the track a flushed decoder would not do: it still knows the shape of the
/// last window and how far its noise has gone.
void SoundReader::restartDecoder() {
  if (firstStamp_ == beginning) {
    if (auto fresh = openDecoder(*track_, {})) {
      decoder_ = *std::move(fresh);
      return;
    }
  }
  avcodec_flush_buffers(decoder_.get());
}

bool SoundReader::isTooEarly() const {
  return firstStamp_ != beginning && packet_->pts != AV_NOPTS_VALUE &&
         packet_->pts + packet_->duration <= firstStamp_;
}

bool SoundReader::isPlausible() const {
  const std::int64_t position = framePosition();
  return isSoundRate(frame_->sample_rate) && position > -latestPosition &&
         position < latestPosition;
}

/// Where the frame's first sample stands; without a stamp it follows on.
std::int64_t SoundReader::framePosition() const {
  return frame_->pts == AV_NOPTS_VALUE ? run_.position(frame_->sample_rate)
                                       : av_rescale_q(frame_->pts, track_->time_base, soundTick);
}

std::int64_t SoundReader::chunkEnd() const {
  return chunkStart_ + std::ssize(chunk_);
}

}  // namespace vesk::media
