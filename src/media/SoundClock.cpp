#include "media/SoundClock.h"

#include <algorithm>
#include <cassert>
#include <cmath>
#include <utility>
#include <vector>

#include "media/StereoSample.h"

extern "C" {
#include <libavutil/channel_layout.h>
#include <libavutil/opt.h>
#include <libswresample/swresample.h>
}

namespace vesk::media {
namespace {

// Stamps tremble by 10 ms each way; what is off by more than that, twice over, is a gap or an
// overlap. In seconds.
constexpr double largestTremble = 0.04;

// The loop: a source that starts to run 200 ppm fast is 1.5 ms off after 20 s at the worst, and no
// more after 2 minutes. Stamps that tremble by 10 ms change its rate by 60 ppm, over seconds.
constexpr double loopRate = 0.05;        ///< 1/s
constexpr double smoothingTime = 2;      ///< s
constexpr double mostDrift = 600;        ///< ppm
constexpr double mostCorrection = 1000;  ///< ppm, of which nobody hears anything
constexpr int millionths = 1'000'000;

constexpr std::int64_t delayUnits = std::int64_t{soundRate} * 4096;
constexpr std::size_t pieceLength = 4096;

ResamplerPtr makeResampler(int channels) {
  AVChannelLayout layout{};
  av_channel_layout_default(&layout, channels);
  SwrContext* context = nullptr;
  swr_alloc_set_opts2(&context, &layout, AV_SAMPLE_FMT_FLT, soundRate, &layout, AV_SAMPLE_FMT_FLT,
                      soundRate, 0, nullptr);
  ResamplerPtr resampler(context);
  av_opt_set_int(context, "flags", SWR_FLAG_RESAMPLE, 0);
  av_opt_set_int(context, "linear_interp", 1, 0);
  [[maybe_unused]] const int status = swr_init(context);
  assert(status >= 0);
  return resampler;
}

}  // namespace

SoundClock::SoundClock(int channels, HostTime zero, Sink sink)
    : channels_(channels),
      zero_(zero),
      sink_(std::move(sink)),
      resampler_(makeResampler(channels)) {}

HostTime SoundClock::end() const {
  const std::int64_t held = swr_get_delay(resampler_.get(), delayUnits);
  const double seconds =
      (static_cast<double>(given_) + static_cast<double>(held) * soundRate / delayUnits) /
      soundRate;
  return zero_ + HostTime(std::llround(seconds * 1e9));
}

/// How far the stream is behind a time, in seconds.
double SoundClock::lag(HostTime time) const {
  return secondsOf(time - end());
}

void SoundClock::push(const SoundBlock& block) {
  const auto count = static_cast<std::int64_t>(block.samples.size()) / std::int64_t{channels_};
  const std::int64_t missing = missingBefore(block, lag(block.stamp));
  if (block.position) {
    nextPosition_ = *block.position + count;
  } else {
    nextPosition_.reset();
  }
  putSilence(missing);
  const std::int64_t cut = std::clamp<std::int64_t>(-missing, 0, count);
  if (cut == count) {
    return;
  }
  if (hasStarted_ && missing == 0) {
    follow(lag(block.stamp), static_cast<double>(count) / soundRate);
  }
  hasStarted_ = true;
  convert(block.samples.data() + cut * channels_, count - cut);
}

/// How many samples the source has left out before a block; negative for what it brings twice.
std::int64_t SoundClock::missingBefore(const SoundBlock& block, double lag) const {
  if (hasStarted_ && block.position && nextPosition_) {
    const std::int64_t missing = *block.position - *nextPosition_;
    if (std::abs(lag - static_cast<double>(missing) / soundRate) <= largestTremble) {
      return missing;
    }
  }
  const bool isOff = std::abs(lag) > largestTremble;
  return isOff || !hasStarted_ ? std::llround(lag * soundRate) : 0;
}

void SoundClock::follow(double lag, double seconds) {
  smoothedLag_ += (lag - smoothedLag_) * (1 - std::exp(-seconds / smoothingTime));
  drift_ += loopRate * loopRate * smoothedLag_ * seconds * millionths;
  drift_ = std::clamp(drift_, -mostDrift, mostDrift);
  correction_ = std::clamp(drift_ + 2 * loopRate * smoothedLag_ * millionths, -mostCorrection,
                           mostCorrection);
  swr_set_compensation(resampler_.get(), static_cast<int>(std::lround(correction_)), millionths);
}

void SoundClock::fillUntil(HostTime time) {
  putSilence(std::llround(lag(time) * soundRate));
}

void SoundClock::putSilence(std::int64_t count) {
  if (count <= 0) {
    return;
  }
  const std::vector<float> silence(pieceLength * static_cast<std::size_t>(channels_));
  for (; count > 0; count -= pieceLength) {
    convert(silence.data(), std::min<std::int64_t>(count, pieceLength));
  }
}

void SoundClock::finish() {
  convert(nullptr, 0);
}

/// Of a null, what is still held back.
void SoundClock::convert(const float* samples, std::int64_t count) {
  const auto inputs = static_cast<int>(count);
  const int room = std::max(swr_get_out_samples(resampler_.get(), inputs), 0);
  std::vector<float> converted(static_cast<std::size_t>(room) *
                               static_cast<std::size_t>(channels_));
  auto* target = reinterpret_cast<std::uint8_t*>(converted.data());
  const auto* source = reinterpret_cast<const std::uint8_t*>(samples);
  const int made =
      swr_convert(resampler_.get(), &target, room, samples == nullptr ? nullptr : &source, inputs);
  assert(made >= 0);
  given_ += made;
  if (made > 0) {
    sink_(std::span(converted).first(static_cast<std::size_t>(made) *
                                     static_cast<std::size_t>(channels_)));
  }
}

}  // namespace vesk::media
