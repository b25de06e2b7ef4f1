#include "media/StereoResampler.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <utility>

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
#include <libavutil/samplefmt.h>
#include <libswresample/swresample.h>
}

namespace vesk::media {
namespace {

constexpr int mostChannels = 64;
constexpr AVChannelLayout stereo = AV_CHANNEL_LAYOUT_STEREO;

/// The channels' usual places where a file says nothing of them.
AVChannelLayout placed(const AVChannelLayout& channels) {
  AVChannelLayout layout{};
  if (channels.order == AV_CHANNEL_ORDER_UNSPEC) {
    av_channel_layout_default(&layout, channels.nb_channels);
  } else {
    av_channel_layout_copy(&layout, &channels);
  }
  return layout;
}

/// One channel goes whole to both sides, where libav would turn it down by 3 dB.
int setMatrix(SwrContext* context, const AVChannelLayout& channels) {
  constexpr std::array<double, 2> both{1, 1};
  return channels.nb_channels == 1 ? swr_set_matrix(context, both.data(), 1) : 0;
}

}  // namespace

StereoResampler::StereoResampler() : kind_(av_frame_alloc()) {}

bool StereoResampler::continues(const AVFrame& frame) const {
  return resampler_ != nullptr && kind_->format == frame.format &&
         kind_->sample_rate == frame.sample_rate &&
         av_channel_layout_compare(&kind_->ch_layout, &frame.ch_layout) == 0;
}

bool StereoResampler::start(const AVFrame& frame) {
  resampler_.reset();
  if (frame.ch_layout.nb_channels < 1 || frame.ch_layout.nb_channels > mostChannels) {
    return false;
  }
  kind_->format = frame.format;
  kind_->sample_rate = frame.sample_rate;
  if (av_channel_layout_copy(&kind_->ch_layout, &frame.ch_layout) < 0) {
    return false;
  }
  AVChannelLayout target = stereo;
  AVChannelLayout channels = placed(frame.ch_layout);
  SwrContext* context = nullptr;
  const bool isSetUp = swr_alloc_set_opts2(&context, &target, AV_SAMPLE_FMT_FLT, soundRate,
                                           &channels, static_cast<AVSampleFormat>(frame.format),
                                           frame.sample_rate, 0, nullptr) >= 0 &&
                       setMatrix(context, channels) >= 0 && swr_init(context) >= 0;
  av_channel_layout_uninit(&channels);
  ResamplerPtr resampler(context);
  if (isSetUp) {
    resampler_ = std::move(resampler);
  }
  return isSetUp;
}

void StereoResampler::push(const AVFrame& frame, std::vector<StereoSample>& out) {
  std::array<const std::uint8_t*, mostChannels> planes{};
  const bool isPlanar = av_sample_fmt_is_planar(static_cast<AVSampleFormat>(frame.format)) != 0;
  const int planeCount = isPlanar ? frame.ch_layout.nb_channels : 1;
  std::copy_n(frame.extended_data, planeCount, planes.begin());
  if (!convert(planes.data(), frame.nb_samples, out)) {
    resampler_.reset();
  }
}

void StereoResampler::finish(std::vector<StereoSample>& out) {
  if (resampler_ != nullptr) {
    convert(nullptr, 0, out);
    resampler_.reset();
  }
}

/// Of a null, what is still held back.
bool StereoResampler::convert(const std::uint8_t** planes, int count,
                              std::vector<StereoSample>& out) {
  const int room = swr_get_out_samples(resampler_.get(), count);
  if (room < 0) {
    return false;
  }
  const std::size_t before = out.size();
  out.resize(before + static_cast<std::size_t>(room));
  auto* target = reinterpret_cast<std::uint8_t*>(out.data() + before);
  const int made = swr_convert(resampler_.get(), &target, room, planes, count);
  out.resize(before + static_cast<std::size_t>(std::max(made, 0)));
  return made >= 0;
}

}  // namespace vesk::media
