#include "media/VideoReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <atomic>
#include <cmath>
#include <cstdint>
#include <deque>
#include <limits>
#include <span>
#include <string>
#include <unordered_map>
#include <utility>

#include "media/FrameImport.h"
#include "media/LibavError.h"
#include "media/LibavHandles.h"
#include "media/MovieBoxes.h"
#include "media/MovieInput.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/common.h>
}

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using Kind = MediaError::Kind;

/// A few bytes of a damaged file can ask for pictures of gigabytes; no screen comes near this.
constexpr std::int64_t maximumPixels = std::int64_t{1} << 27;

constexpr double infinity = std::numeric_limits<double>::infinity();

std::expected<CodecPtr, MediaError> openDecoder(const AVStream& stream, int threads,
                                                const fs::path& file) {
  const AVCodec* codec = avcodec_find_decoder(stream.codecpar->codec_id);
  if (codec == nullptr) {
    return std::unexpected(MediaError{
        Kind::unsupported,
        fmt::format("本机的 FFmpeg 不能解码 “{}” 的视频格式 {}", file.filename().string(),
                    avcodec_get_name(stream.codecpar->codec_id))});
  }
  CodecPtr decoder(avcodec_alloc_context3(codec));
  if (decoder == nullptr) {
    return std::unexpected(readingError(Kind::decodeFailed, AVERROR(ENOMEM), file));
  }
  int status = avcodec_parameters_to_context(decoder.get(), stream.codecpar);
  if (status >= 0) {
    decoder->pkt_timebase = stream.time_base;
    decoder->max_pixels = maximumPixels;
    decoder->thread_count = threads;
    status = avcodec_open2(decoder.get(), codec, nullptr);
  }
  if (status < 0) {
    return std::unexpected(readingError(Kind::decodeFailed, status, file));
  }
  return decoder;
}

double seconds(AVRational value) {
  return value.den == 0 ? 0 : av_q2d(value);
}

VideoInfo describe(const AVFormatContext& input, const AVStream& stream, const fs::path& file) {
  const bool knowsDuration = input.duration != AV_NOPTS_VALUE;
  return {.width = stream.codecpar->width,
          .height = stream.codecpar->height,
          .frameRate = seconds(stream.avg_frame_rate),
          .duration = knowsDuration ? static_cast<double>(input.duration) / AV_TIME_BASE : 0,
          .truncated = endsInsideABox(file),
          .orientation = displayOrientationOf(stream)};
}

}  // namespace

class VideoReader::Decoding {
 public:
  Decoding(fs::path file, InputPtr input, AVStream* stream, CodecPtr decoder)
      : info_(describe(*input, *stream, file)),
        file_(std::move(file)),
        input_(std::move(input)),
        stream_(stream),
        decoder_(std::move(decoder)),
        import_(info_.width, info_.height) {}

  [[nodiscard]] const VideoInfo& info() const noexcept { return info_; }
  std::expected<std::optional<VideoFrame>, MediaError> next();
  std::expected<void, MediaError> seek(double time);
  std::expected<void, MediaError> seekKeyFrame(double time);
  double keyFrameBefore(double time) const;
  void interrupt() noexcept { interrupted_ = true; }

 private:
  std::expected<std::optional<VideoFrame>, MediaError> decode();
  void feedDecoder();
  void remember(const AVPacket& packet);
  void giveParameters(AVPacket& packet) const;
  std::expected<std::optional<VideoFrame>, MediaError> closing() const;
  double presentationTime() const;

  std::expected<void, MediaError> restartAt(std::int64_t tick);
  int jumpTo(std::int64_t tick);
  bool beginsBy(double time);
  std::int64_t ticksAt(double time) const;
  double timeAt(std::int64_t tick) const;
  std::int64_t firstTick() const;
  const AVIndexEntry* keyEntryBefore(std::int64_t tick) const;
  std::int64_t keyTickBefore(double time) const;
  double keyTime(std::int64_t tick) const;

  VideoInfo info_;
  fs::path file_;
  InputPtr input_;
  AVStream* stream_;
  CodecPtr decoder_;
  FrameImport import_;
  PacketPtr packet_{av_packet_alloc()};
  FramePtr frame_{av_frame_alloc()};
  int readStatus_ = 0;  ///< of the last read: negative once there is nothing more to read
  bool sawDamage_ = false;
  bool isRestarted_ = false;  ///< the decoder begins anew with the next packet
  bool deliveredSomething_ = false;
  double latest_ = -infinity;  ///< nothing before this is delivered any more
  /// When the packet that was read last is decoded and shown.
  std::int64_t fedTick_ = std::numeric_limits<std::int64_t>::min();
  double fedTime_ = -infinity;
  std::deque<VideoFrame> held_;  ///< decoded while seeking, still to be delivered
  std::atomic<bool> interrupted_ = false;

  /// The index tells when a picture is decoded. Of the key frames read so far, by that tick: when
  /// it is shown, where that is another time.
  std::unordered_map<std::int64_t, double> keyTimes_;
};

std::expected<std::optional<VideoFrame>, MediaError> VideoReader::Decoding::next() {
  if (held_.empty()) {
    return decode();
  }
  std::optional<VideoFrame> picture(std::move(held_.front()));
  held_.pop_front();
  return picture;
}

std::expected<std::optional<VideoFrame>, MediaError> VideoReader::Decoding::decode() {
  while (!interrupted_) {
    const int status = avcodec_receive_frame(decoder_.get(), frame_.get());
    if (status == AVERROR(EAGAIN)) {
      feedDecoder();
      continue;
    }
    if (status == AVERROR_EOF) {
      return closing();
    }
    if (status == AVERROR(ENOMEM)) {
      return std::unexpected(readingError(Kind::decodeFailed, status, file_));
    }
    if (status < 0) {
      sawDamage_ = true;
      continue;
    }
    const double time = presentationTime();
    if (time < latest_) {
      continue;  // its turn is over: a picture after it has been shown
    }
    auto picture = import_.import(*frame_, time);
    av_frame_unref(frame_.get());
    if (!picture) {
      return std::unexpected(readingError(Kind::decodeFailed, picture.error(), file_));
    }
    latest_ = time;
    deliveredSomething_ = true;
    return std::optional(std::move(*picture));
  }
  return std::unexpected(readingError(Kind::decodeFailed, AVERROR_EXIT, file_));
}

/// Gives the decoder the track's next packet, or the signal to empty itself.
void VideoReader::Decoding::feedDecoder() {
  while (readStatus_ >= 0) {
    readStatus_ = av_read_frame(input_.get(), packet_.get());
    if (readStatus_ < 0) {
      break;
    }
    const bool isOurs = packet_->stream_index == stream_->index;
    if (isOurs) {
      remember(*packet_);
      if (std::exchange(isRestarted_, false)) {
        giveParameters(*packet_);
      }
    }
    if (isOurs && avcodec_send_packet(decoder_.get(), packet_.get()) < 0) {
      sawDamage_ = true;
    }
    av_packet_unref(packet_.get());
    if (isOurs) {
      return;
    }
  }
  avcodec_send_packet(decoder_.get(), nullptr);
}

/// Where a movie changes its size half-way, the decoder has to be told the first one again.
void VideoReader::Decoding::giveParameters(AVPacket& packet) const {
  const std::span parameters(stream_->codecpar->extradata,
                             static_cast<std::size_t>(stream_->codecpar->extradata_size));
  std::uint8_t* copy =
      parameters.empty()
          ? nullptr
          : av_packet_new_side_data(&packet, AV_PKT_DATA_NEW_EXTRADATA, parameters.size());
  if (copy != nullptr) {
    std::ranges::copy(parameters, copy);
  }
}

void VideoReader::Decoding::remember(const AVPacket& packet) {
  if (packet.pts == AV_NOPTS_VALUE || packet.dts == AV_NOPTS_VALUE) {
    return;
  }
  fedTick_ = packet.dts;
  fedTime_ = timeAt(packet.pts);
  const bool isKey = (packet.flags & AV_PKT_FLAG_KEY) != 0;
  if (isKey && packet.pts != packet.dts) {
    keyTimes_[packet.dts] = fedTime_;
  }
}

std::expected<std::optional<VideoFrame>, MediaError> VideoReader::Decoding::closing() const {
  if (readStatus_ != AVERROR_EOF) {
    return std::unexpected(readingError(Kind::decodeFailed, readStatus_, file_));
  }
  if (info_.truncated) {
    return std::unexpected(readingError(Kind::decodeFailed, AVERROR_EOF, file_));
  }
  if (!deliveredSomething_ && sawDamage_) {
    return std::unexpected(readingError(Kind::decodeFailed, AVERROR_INVALIDDATA, file_));
  }
  return std::nullopt;
}

double VideoReader::Decoding::presentationTime() const {
  if (frame_->best_effort_timestamp != AV_NOPTS_VALUE) {
    return timeAt(frame_->best_effort_timestamp);
  }
  const double frameDuration = info_.frameRate > 0 ? 1 / info_.frameRate : 0;
  return std::max(latest_ + frameDuration, 0.0);
}

std::expected<void, MediaError> VideoReader::Decoding::seek(double time) {
  if (auto started = seekKeyFrame(time); !started) {
    return started;
  }
  std::optional<VideoFrame> standing;
  while (true) {
    auto picture = next();
    const bool ended = !picture || !picture->has_value();
    if (ended || (*picture)->pts > time) {
      // End and failure come again when next() asks.
      if (!ended) {
        held_.push_front(std::move(**picture));
      }
      if (standing) {
        held_.push_front(std::move(*standing));
      }
      return {};
    }
    standing = std::move(**picture);
  }
}

std::expected<void, MediaError> VideoReader::Decoding::seekKeyFrame(double time) {
  // A damaged key frame, or the missing end of a cut file, sends us back to the ones before: with
  // longer and longer strides, so that in the worst case not every way is gone many times.
  const std::int64_t oneSecond = std::max<std::int64_t>(ticksAt(1), 1);
  std::int64_t from = keyTickBefore(time);
  for (std::int64_t stride = 1;; stride = std::max(av_sat_add64(stride, stride), oneSecond)) {
    if (auto restarted = restartAt(from); !restarted) {
      return restarted;
    }
    const bool begins = beginsBy(time);
    if (interrupted_) {
      return std::unexpected(readingError(Kind::decodeFailed, AVERROR_EXIT, file_));
    }
    if (begins || from <= firstTick()) {
      return {};
    }
    const AVIndexEntry* before = keyEntryBefore(av_sat_sub64(from, stride));
    from = std::min(before != nullptr ? before->timestamp : firstTick(), from - 1);
  }
}

/// Continues with the key frame that is decoded at a tick of the index, or one before it.
std::expected<void, MediaError> VideoReader::Decoding::restartAt(std::int64_t tick) {
  // libav takes a time in which pictures are shown, and moves it back by as much as the first one
  // is shown after it is decoded.
  const bool knowsDelay =
      stream_->start_time != AV_NOPTS_VALUE && stream_->start_time > firstTick();
  const std::int64_t delay = knowsDelay ? av_sat_sub64(stream_->start_time, firstTick()) : 0;
  int status = jumpTo(av_sat_add64(tick, delay));
  if (status >= 0 && fedTick_ > tick && delay > 0) {
    status = jumpTo(tick);
  }
  if (status < 0) {
    return std::unexpected(readingError(Kind::decodeFailed, status, file_));
  }
  // Pictures stored after a key frame but shown before it may need some from before it.
  latest_ = fedTick_ <= firstTick() ? -infinity : fedTime_;
  return {};
}

/// Continues with the key frame that libav finds, whose packet the decoder then has got.
int VideoReader::Decoding::jumpTo(std::int64_t tick) {
  const int status = av_seek_frame(input_.get(), stream_->index, tick, AVSEEK_FLAG_BACKWARD);
  if (status >= 0) {
    avcodec_flush_buffers(decoder_.get());
    held_.clear();
    readStatus_ = 0;
    isRestarted_ = true;
    fedTick_ = std::numeric_limits<std::int64_t>::min();
    fedTime_ = -infinity;
    feedDecoder();
  }
  return status;
}

/// Whether what was started anew begins with a picture at or before `time`, which then is held.
bool VideoReader::Decoding::beginsBy(double time) {
  if (latest_ > time) {
    return false;
  }
  auto picture = decode();
  if (!picture || !picture->has_value()) {
    return false;
  }
  held_.push_back(std::move(**picture));
  return held_.front().pts <= time;
}

double VideoReader::Decoding::keyFrameBefore(double time) const {
  return keyTime(keyTickBefore(time));
}

/// The tick at which the last key frame shown at or before `time` is decoded.
std::int64_t VideoReader::Decoding::keyTickBefore(double time) const {
  const AVIndexEntry* entry = keyEntryBefore(ticksAt(time));
  while (entry != nullptr && keyTime(entry->timestamp) > time) {
    const AVIndexEntry* before = keyEntryBefore(entry->timestamp - 1);
    // In a damaged index times may fall.
    const bool isEarlier = before != nullptr && before->timestamp < entry->timestamp;
    entry = isEarlier ? before : nullptr;
  }
  return entry != nullptr ? entry->timestamp : firstTick();
}

const AVIndexEntry* VideoReader::Decoding::keyEntryBefore(std::int64_t tick) const {
  return avformat_index_get_entry_from_timestamp(stream_, tick, AVSEEK_FLAG_BACKWARD);
}

std::int64_t VideoReader::Decoding::firstTick() const {
  const AVIndexEntry* first = avformat_index_get_entry(stream_, 0);
  return first != nullptr ? first->timestamp : std::numeric_limits<std::int64_t>::max();
}

double VideoReader::Decoding::keyTime(std::int64_t tick) const {
  const auto known = keyTimes_.find(tick);
  return known != keyTimes_.end() ? known->second : timeAt(tick);
}

double VideoReader::Decoding::timeAt(std::int64_t tick) const {
  return static_cast<double>(tick) * av_q2d(stream_->time_base);
}

std::int64_t VideoReader::Decoding::ticksAt(double time) const {
  constexpr double limit = 4e18;  // within what an index can express
  const double ticks = time / av_q2d(stream_->time_base);
  return std::isnan(ticks) ? 0 : std::llround(std::clamp(ticks, -limit, limit));
}

std::expected<VideoReader, MediaError> VideoReader::open(const fs::path& file, int threads) {
  auto input = openMovie(file);
  if (!input) {
    return std::unexpected(std::move(input.error()));
  }
  AVStream* stream = firstVideoTrack(**input);
  if (stream == nullptr) {
    // Without its index a movie shows no tracks, whatever it had.
    return std::unexpected(endsInsideABox(file)
                               ? readingError(Kind::openFailed, AVERROR_INVALIDDATA, file)
                               : noVideoTrackError(file));
  }
  auto decoder = openDecoder(*stream, threads, file);
  if (!decoder) {
    return std::unexpected(std::move(decoder.error()));
  }
  readOnly(*stream, **input);
  return VideoReader(
      std::make_unique<Decoding>(file, std::move(*input), stream, std::move(*decoder)));
}

VideoReader::VideoReader(std::unique_ptr<Decoding> decoding) : decoding_(std::move(decoding)) {}
VideoReader::VideoReader(VideoReader&&) noexcept = default;
VideoReader& VideoReader::operator=(VideoReader&&) noexcept = default;
VideoReader::~VideoReader() = default;

const VideoInfo& VideoReader::info() const noexcept {
  return decoding_->info();
}

std::expected<std::optional<VideoFrame>, MediaError> VideoReader::next() {
  return decoding_->next();
}

std::expected<void, MediaError> VideoReader::seek(double time) {
  return decoding_->seek(std::isnan(time) ? 0 : time);
}

std::expected<void, MediaError> VideoReader::seekKeyFrame(double time) {
  return decoding_->seekKeyFrame(std::isnan(time) ? 0 : time);
}

double VideoReader::keyFrameBefore(double time) const {
  return decoding_->keyFrameBefore(time);
}

void VideoReader::interrupt() noexcept {
  decoding_->interrupt();
}

}  // namespace vesk::media
