#include "media/VideoWriter.h"

#include <fmt/format.h>

#include <cassert>
#include <optional>
#include <string>
#include <system_error>
#include <utility>

#include "media/LibavError.h"
#include "media/LibavHandles.h"
#include "media/PictureFrame.h"
#include "media/VideoEncoder.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/dict.h>
}

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using Kind = MediaError::Kind;

/// Devices, pipes and folders are no place for a movie, and must not be removed after a failure.
std::optional<MediaError> objectionToTarget(const fs::path& file) {
  std::error_code ignored;
  const fs::file_status status = fs::status(file, ignored);
  if (fs::is_directory(status)) {
    return writingError(Kind::writeFailed, AVERROR(EISDIR), file);
  }
  if (fs::exists(status) && !fs::is_regular_file(status)) {
    return MediaError{Kind::writeFailed,
                      fmt::format("“{}” 不是普通文件", file.filename().string())};
  }
  return std::nullopt;
}

}  // namespace

class VideoWriter::Encoding {
 public:
  Encoding(fs::path file, OutputPtr output, CodecPtr encoder)
      : file_(std::move(file)), output_(std::move(output)), encoder_(std::move(encoder)) {}
  Encoding(const Encoding&) = delete;
  Encoding& operator=(const Encoding&) = delete;
  ~Encoding() { cancel(); }

  std::expected<void, MediaError> start();
  std::expected<void, MediaError> write(const I420Picture& picture, std::int64_t frameIndex);
  std::expected<void, MediaError> finish();
  void cancel() noexcept;

 private:
  using Outcome = std::expected<void, MediaError>;

  Outcome encode(const AVFrame* frame);
  Outcome store();
  Outcome encoderFailed(int code);
  Outcome fileFailed(int code);

  fs::path file_;
  OutputPtr output_;  ///< null once finished or given up
  CodecPtr encoder_;
  FramePtr frame_{av_frame_alloc()};
  PacketPtr packet_{av_packet_alloc()};
  std::int64_t latestIndex_ = -1;
};

std::expected<void, MediaError> VideoWriter::Encoding::start() {
  const std::string address = output_->url;
  if (const int status = avio_open(&output_->pb, address.c_str(), AVIO_FLAG_WRITE); status < 0) {
    output_.reset();  // what lies there is not ours to remove
    return std::unexpected(writingError(Kind::writeFailed, status, file_));
  }
  AVStream* stream = avformat_new_stream(output_.get(), nullptr);
  if (stream == nullptr) {
    return fileFailed(AVERROR(ENOMEM));
  }
  stream->time_base = encoder_->time_base;
  stream->avg_frame_rate = encoder_->framerate;
  int status = avcodec_parameters_from_context(stream->codecpar, encoder_.get());
  if (status >= 0) {
    AVDictionary* options = nullptr;
    av_dict_set(&options, "movflags", "+faststart+write_colr", 0);
    status = avformat_write_header(output_.get(), &options);
    av_dict_free(&options);
  }
  return status < 0 ? fileFailed(status) : Outcome{};
}

std::expected<void, MediaError> VideoWriter::Encoding::write(const I420Picture& picture,
                                                             std::int64_t frameIndex) {
  assert(output_ != nullptr && frameIndex > latestIndex_);
  assert(picture.width() == encoder_->width && picture.height() == encoder_->height);
  latestIndex_ = frameIndex;
  const int status = pointAt(picture, *frame_);
  if (status < 0) {
    return encoderFailed(status);
  }
  frame_->pts = frameIndex;
  auto outcome = encode(frame_.get());
  // Both encoders copy what they keep.
  assert(!outcome || av_buffer_get_ref_count(frame_->buf[0]) == 1);
  av_frame_unref(frame_.get());
  return outcome;
}

/// Hands a frame (null: the end) to the encoder and stores every packet that is ready.
std::expected<void, MediaError> VideoWriter::Encoding::encode(const AVFrame* frame) {
  int status = avcodec_send_frame(encoder_.get(), frame);
  while (status >= 0) {
    status = avcodec_receive_packet(encoder_.get(), packet_.get());
    if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) {
      return {};
    }
    if (status >= 0) {
      if (auto stored = store(); !stored) {
        return stored;
      }
    }
  }
  return encoderFailed(status);
}

std::expected<void, MediaError> VideoWriter::Encoding::store() {
  AVStream* stream = output_->streams[0];
  packet_->stream_index = stream->index;
  packet_->duration = 1;
  av_packet_rescale_ts(packet_.get(), encoder_->time_base, stream->time_base);
  const int status = av_interleaved_write_frame(output_.get(), packet_.get());
  return status < 0 ? fileFailed(status) : Outcome{};
}

std::expected<void, MediaError> VideoWriter::Encoding::finish() {
  assert(output_ != nullptr);
  if (auto flushed = encode(nullptr); !flushed) {
    return flushed;
  }
  int status = av_write_trailer(output_.get());
  if (status >= 0) {
    status = avio_closep(&output_->pb);
  }
  if (status < 0) {
    return fileFailed(status);
  }
  output_.reset();
  return {};
}

void VideoWriter::Encoding::cancel() noexcept {
  if (output_ != nullptr) {
    output_.reset();
    std::error_code ignored;
    fs::remove(file_, ignored);
  }
}

std::expected<void, MediaError> VideoWriter::Encoding::encoderFailed(int code) {
  cancel();
  return std::unexpected(writingError(Kind::encodeFailed, code, file_));
}

std::expected<void, MediaError> VideoWriter::Encoding::fileFailed(int code) {
  cancel();
  return std::unexpected(writingError(Kind::writeFailed, code, file_));
}

std::expected<VideoWriter, MediaError> VideoWriter::open(const fs::path& file,
                                                         const VideoSettings& settings) {
  silenceLibav();
  if (auto objection = objectionToTarget(file)) {
    return std::unexpected(std::move(*objection));
  }
  AVFormatContext* context = nullptr;
  const char* muxer = settings.container == Container::mp4 ? "mp4" : "mov";
  const std::string address = "file:" + file.string();
  const int status = avformat_alloc_output_context2(&context, nullptr, muxer, address.c_str());
  if (status < 0) {
    return std::unexpected(writingError(Kind::writeFailed, status, file));
  }
  OutputPtr output(context);
  const bool needsGlobalHeader = (output->oformat->flags & AVFMT_GLOBALHEADER) != 0;
  auto encoder = openEncoder(encoderFor(settings.container), settings, needsGlobalHeader);
  if (!encoder) {
    return std::unexpected(std::move(encoder.error()));
  }
  auto encoding = std::make_unique<Encoding>(file, std::move(output), std::move(*encoder));
  if (auto started = encoding->start(); !started) {
    return std::unexpected(std::move(started.error()));
  }
  return VideoWriter(std::move(encoding));
}

VideoWriter::VideoWriter(std::unique_ptr<Encoding> encoding) : encoding_(std::move(encoding)) {}
VideoWriter::VideoWriter(VideoWriter&&) noexcept = default;
VideoWriter& VideoWriter::operator=(VideoWriter&&) noexcept = default;
VideoWriter::~VideoWriter() = default;

std::expected<void, MediaError> VideoWriter::write(const I420Picture& picture,
                                                   std::int64_t frameIndex) {
  return encoding_->write(picture, frameIndex);
}

std::expected<void, MediaError> VideoWriter::finish() {
  return encoding_->finish();
}

void VideoWriter::cancel() noexcept {
  encoding_->cancel();
}

}  // namespace vesk::media
