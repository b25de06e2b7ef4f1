#include "media/VideoReader.h"

#include <fmt/format.h>

#include <algorithm>
#include <cstdint>
#include <limits>
#include <string>
#include <utility>

#include "media/FrameImport.h"
#include "media/LibavError.h"
#include "media/LibavHandles.h"
#include "media/MovieBoxes.h"
#include "media/MovieInput.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using Kind = MediaError::Kind;

/// A few bytes of a damaged file can ask for pictures of gigabytes; no screen comes near this.
constexpr std::int64_t maximumPixels = std::int64_t{1} << 27;

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

 private:
  void feedDecoder();
  std::expected<std::optional<VideoFrame>, MediaError> closing() const;
  double presentationTime() const;

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
  double latest_ = -std::numeric_limits<double>::infinity();
};

std::expected<std::optional<VideoFrame>, MediaError> VideoReader::Decoding::next() {
  while (true) {
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
    return std::optional(std::move(*picture));
  }
}

/// Gives the decoder the track's next packet, or the signal to empty itself.
void VideoReader::Decoding::feedDecoder() {
  while (readStatus_ >= 0) {
    readStatus_ = av_read_frame(input_.get(), packet_.get());
    if (readStatus_ < 0) {
      break;
    }
    const bool isOurs = packet_->stream_index == stream_->index;
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

std::expected<std::optional<VideoFrame>, MediaError> VideoReader::Decoding::closing() const {
  if (readStatus_ != AVERROR_EOF) {
    return std::unexpected(readingError(Kind::decodeFailed, readStatus_, file_));
  }
  if (info_.truncated) {
    return std::unexpected(readingError(Kind::decodeFailed, AVERROR_EOF, file_));
  }
  const bool deliveredNothing = latest_ == -std::numeric_limits<double>::infinity();
  if (deliveredNothing && sawDamage_) {
    return std::unexpected(readingError(Kind::decodeFailed, AVERROR_INVALIDDATA, file_));
  }
  return std::nullopt;
}

double VideoReader::Decoding::presentationTime() const {
  if (frame_->best_effort_timestamp != AV_NOPTS_VALUE) {
    return static_cast<double>(frame_->best_effort_timestamp) * av_q2d(stream_->time_base);
  }
  const double frameDuration = info_.frameRate > 0 ? 1 / info_.frameRate : 0;
  return std::max(latest_ + frameDuration, 0.0);
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

}  // namespace vesk::media
