#include "media/SoundEncoder.h"

#include <cassert>
#include <utility>

#include "media/EncodeFrame.h"
#include "media/StereoSample.h"

extern "C" {
#include <libavcodec/avcodec.h>
#include <libavutil/channel_layout.h>
}

namespace vesk::media {

std::expected<SoundEncoder, int> SoundEncoder::open(const SoundTrackSettings& settings) {
  const AVCodec* encoder = avcodec_find_encoder_by_name("aac");
  if (encoder == nullptr) {
    return std::unexpected(AVERROR_ENCODER_NOT_FOUND);
  }
  CodecPtr codec(avcodec_alloc_context3(encoder));
  FramePtr frame(av_frame_alloc());
  if (codec == nullptr || frame == nullptr) {
    return std::unexpected(AVERROR(ENOMEM));
  }
  codec->sample_fmt = AV_SAMPLE_FMT_FLTP;
  codec->sample_rate = soundRate;
  codec->time_base = {1, soundRate};
  codec->bit_rate = settings.bitRate;
  codec->flags |= AV_CODEC_FLAG_GLOBAL_HEADER;
  av_channel_layout_default(&codec->ch_layout, settings.channels);
  int status = avcodec_open2(codec.get(), encoder, nullptr);
  SoundEncoder opened(std::move(codec), std::move(frame));
  if (status >= 0) {
    status = opened.clearFrame();
  }
  if (status < 0) {
    return std::unexpected(status);
  }
  return opened;
}

SoundEncoder::SoundEncoder(CodecPtr codec, FramePtr frame)
    : codec_(std::move(codec)), frame_(std::move(frame)) {}

int SoundEncoder::encode(std::span<const float> samples, std::vector<PacketPtr>& ready) {
  const auto channels = static_cast<std::size_t>(codec_->ch_layout.nb_channels);
  assert(samples.size() % channels == 0);
  for (; !samples.empty(); samples = samples.subspan(channels)) {
    for (std::size_t channel = 0; channel < channels; ++channel) {
      reinterpret_cast<float*>(frame_->extended_data[channel])[filled_] = samples[channel];
    }
    if (++filled_ == codec_->frame_size) {
      if (const int status = encodeFilled(ready); status < 0) {
        return status;
      }
    }
  }
  return 0;
}

int SoundEncoder::finish(std::vector<PacketPtr>& ready) {
  const int status = filled_ > 0 ? encodeFilled(ready) : 0;
  return status < 0 ? status : encodeFrame(*codec_, nullptr, ready);
}

int SoundEncoder::encodeFilled(std::vector<PacketPtr>& ready) {
  frame_->nb_samples = filled_;
  position_ += filled_;
  const int status = encodeFrame(*codec_, frame_.get(), ready);
  return status < 0 ? status : clearFrame();
}

/// A new frame to be filled; the encoder may still hold the one before.
int SoundEncoder::clearFrame() {
  av_frame_unref(frame_.get());
  frame_->format = codec_->sample_fmt;
  frame_->sample_rate = soundRate;
  frame_->nb_samples = codec_->frame_size;
  frame_->pts = position_;
  filled_ = 0;
  const int status = av_channel_layout_copy(&frame_->ch_layout, &codec_->ch_layout);
  return status < 0 ? status : av_frame_get_buffer(frame_.get(), 0);
}

}  // namespace vesk::media
