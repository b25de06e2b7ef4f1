#include "media/SoundWriter.h"

#include <utility>

#include "media/LibavError.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
#include <libavutil/channel_layout.h>
}

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using Kind = MediaError::Kind;

constexpr int bitRate = 192'000;
constexpr AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;

std::expected<CodecPtr, MediaError> openEncoder(bool needsGlobalHeader, const fs::path& file) {
  const AVCodec* codec = avcodec_find_encoder_by_name("aac");
  if (codec == nullptr) {
    return std::unexpected(MediaError{Kind::unsupported, "本机的 FFmpeg 没有 AAC 编码器"});
  }
  CodecPtr encoder(avcodec_alloc_context3(codec));
  if (encoder == nullptr) {
    return std::unexpected(writingError(Kind::encodeFailed, AVERROR(ENOMEM), file));
  }
  encoder->sample_fmt = AV_SAMPLE_FMT_FLTP;
  encoder->sample_rate = soundRate;
  encoder->time_base = {1, soundRate};
  encoder->bit_rate = bitRate;
  if (needsGlobalHeader) {
    encoder->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  }
  int status = av_channel_layout_copy(&encoder->ch_layout, &stereo);
  if (status >= 0) {
    status = avcodec_open2(encoder.get(), codec, nullptr);
  }
  if (status < 0) {
    return std::unexpected(writingError(Kind::encodeFailed, status, file));
  }
  return encoder;
}

}  // namespace

std::expected<SoundWriter, MediaError> SoundWriter::create(const fs::path& file) {
  auto output = MovieOutput::create(file, "ipod", file);
  if (!output) {
    return std::unexpected(std::move(output.error()));
  }
  auto encoder = openEncoder(output->needsGlobalHeader(), file);
  if (!encoder) {
    return std::unexpected(std::move(encoder.error()));
  }
  SoundWriter writer(file, *std::move(output), *std::move(encoder));
  if (auto started = writer.start(); !started) {
    return std::unexpected(std::move(started.error()));
  }
  return writer;
}

SoundWriter::SoundWriter(fs::path file, MovieOutput output, CodecPtr encoder)
    : file_(std::move(file)),
      output_(std::move(output)),
      encoder_(std::move(encoder)),
      frame_(av_frame_alloc()),
      packet_(av_packet_alloc()) {}

std::expected<void, MediaError> SoundWriter::start() {
  const CodecParametersPtr kind(avcodec_parameters_alloc());
  int status = avcodec_parameters_from_context(kind.get(), encoder_.get());
  if (status >= 0) {
    track_ = output_.addTrack(*kind, encoder_->time_base);
    status = track_ == nullptr ? AVERROR(ENOMEM) : clearFrame();
  }
  return status < 0 ? encoderFailed(status) : output_.start();
}

/// A new frame to be filled; the encoder may still hold the one before.
int SoundWriter::clearFrame() {
  av_frame_unref(frame_.get());
  frame_->format = encoder_->sample_fmt;
  frame_->sample_rate = soundRate;
  frame_->nb_samples = encoder_->frame_size;
  frame_->pts = position_;
  filled_ = 0;
  const int status = av_channel_layout_copy(&frame_->ch_layout, &stereo);
  return status < 0 ? status : av_frame_get_buffer(frame_.get(), 0);
}

std::expected<void, MediaError> SoundWriter::write(std::span<const StereoSample> samples) {
  for (const StereoSample& sample : samples) {
    reinterpret_cast<float*>(frame_->data[0])[filled_] = sample.left;
    reinterpret_cast<float*>(frame_->data[1])[filled_] = sample.right;
    if (++filled_ == encoder_->frame_size) {
      if (auto encoded = encodeFrame(); !encoded) {
        return encoded;
      }
    }
  }
  return {};
}

std::expected<void, MediaError> SoundWriter::finish() {
  if (filled_ > 0) {
    if (auto encoded = encodeFrame(); !encoded) {
      return encoded;
    }
  }
  if (auto flushed = encode(nullptr); !flushed) {
    return flushed;
  }
  return output_.finish();
}

std::expected<void, MediaError> SoundWriter::encodeFrame() {
  frame_->nb_samples = filled_;
  position_ += filled_;
  if (auto encoded = encode(frame_.get()); !encoded) {
    return encoded;
  }
  const int status = clearFrame();
  return status < 0 ? encoderFailed(status) : Outcome{};
}

/// Hands a frame (null: the end) to the encoder and stores every packet that is ready.
std::expected<void, MediaError> SoundWriter::encode(const AVFrame* frame) {
  int status = avcodec_send_frame(encoder_.get(), frame);
  while (status >= 0) {
    status = avcodec_receive_packet(encoder_.get(), packet_.get());
    if (status == AVERROR(EAGAIN) || status == AVERROR_EOF) {
      return {};
    }
    if (status >= 0) {
      packet_->stream_index = track_->index;
      av_packet_rescale_ts(packet_.get(), encoder_->time_base, track_->time_base);
      const auto stored = output_.write(*packet_);
      if (!stored) {
        return std::unexpected(stored.error());
      }
      status = *stored;
      av_packet_unref(packet_.get());
    }
  }
  return encoderFailed(status);
}

std::unexpected<MediaError> SoundWriter::encoderFailed(int code) const {
  return std::unexpected(writingError(Kind::encodeFailed, code, file_));
}

}  // namespace vesk::media
