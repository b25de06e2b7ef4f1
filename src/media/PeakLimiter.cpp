#include "media/PeakLimiter.h"

#include <algorithm>
#include <cmath>
#include <numbers>
#include <utility>

namespace vesk::media {
namespace {

constexpr float fullScale = 1;
/// What a peak is brought down to. The rest is for what eight points a sample miss of it, and for
/// the change of the gain itself.
constexpr double ceiling = 0.98;
constexpr float absurd = 1e6F;
/// So many samples wait until those that are spent are dropped all at once.
constexpr std::size_t lineRoom = 1024;

// Reductions, 1 - gain, are whole numbers of this unit.
constexpr std::int64_t unit = std::int64_t{1} << 30;
constexpr std::int64_t inaudible = unit >> 14;
constexpr std::int64_t releaseSamples = soundRate / 12;

/// The Kaiser window at x of -1…1, which falls to the sides the faster the greater beta.
double kaiser(double x, double beta) {
  return std::cyl_bessel_i(0.0, beta * std::sqrt(std::max(1 - x * x, 0.0))) /
         std::cyl_bessel_i(0.0, beta);
}

double sinc(double x) {
  return x == 0 ? 1 : std::sin(std::numbers::pi * x) / (std::numbers::pi * x);
}

float audible(float value) {
  return std::abs(value) < absurd ? value : 0;  // no number compares as smaller
}

std::int64_t reductionFor(float peak) {
  if (peak <= fullScale) {
    return 0;
  }
  return std::llround((1 - ceiling / double{peak}) * static_cast<double>(unit));
}

}  // namespace

PeakLimiter::PeakLimiter() {
  constexpr double beta = 8;
  constexpr double half = tapCount / 2.0;
  float strongest = 1;
  for (std::size_t phase = 0; phase < phaseCount; ++phase) {
    const double shift = static_cast<double>(phase + 1) / (phaseCount + 1);
    float sum = 0;
    for (std::size_t tap = 0; tap < tapCount; ++tap) {
      const double distance = static_cast<double>(tap) - (half - 1) - shift;
      const double weight = sinc(distance) * kaiser(distance / half, beta);
      taps_[phase][tap] = static_cast<float>(weight);
      sum += std::abs(taps_[phase][tap]);
    }
    strongest = std::max(strongest, sum);
  }
  quiet_ = fullScale / strongest;
  line_.reserve(lineRoom);
  reset();
}

void PeakLimiter::reset() {
  line_.assign(tapCount, {});
  lineStart_ = -static_cast<std::int64_t>(tapCount);
  loudUntil_ = lineStart_;
  previousPeak_ = 0;
  needs_ = {};
  released_ = 0;
  first_ = {};
  second_ = {};
}

void PeakLimiter::push(std::span<const StereoSample> in, std::vector<StereoSample>& out) {
  for (const StereoSample& sample : in) {
    if (line_.size() == lineRoom) {
      dropSpent();
    }
    take({audible(sample.left), audible(sample.right)}, out);
  }
}

void PeakLimiter::dropSpent() {
  constexpr std::size_t spent = lineRoom - (tapCount + static_cast<std::size_t>(lookAhead));
  line_.erase(line_.begin(), line_.begin() + static_cast<std::ptrdiff_t>(spent));
  lineStart_ += static_cast<std::int64_t>(spent);
}

void PeakLimiter::finish(std::vector<StereoSample>& out) {
  const std::vector<StereoSample> silence(static_cast<std::size_t>(lookAhead) + tapCount / 2);
  push(silence, out);
}

void PeakLimiter::take(StereoSample sample, std::vector<StereoSample>& out) {
  line_.push_back(sample);
  const std::size_t newest = line_.size() - 1;
  const std::int64_t index = lineStart_ + static_cast<std::int64_t>(newest);
  if (std::max(std::abs(sample.left), std::abs(sample.right)) > quiet_) {
    loudUntil_ = index + static_cast<std::int64_t>(tapCount);
  }
  const float peak = index <= loudUntil_ ? peakBehind(newest) : 0;
  const std::int64_t seen = index - static_cast<std::int64_t>(tapCount / 2);
  const std::int64_t sum = second_.next(first_.next(heldReduction(seen, peak)));

  const std::int64_t ready = seen - lookAhead;
  if (ready < 0) {
    return;
  }
  StereoSample result = line_[static_cast<std::size_t>(ready - lineStart_)];
  if (sum != 0) {
    constexpr double whole = static_cast<double>(unit) * firstLength * secondLength;
    const auto gain = static_cast<float>(1 - static_cast<double>(sum) / whole);
    result = {result.left * gain, result.right * gain};
  }
  out.push_back(result);
}

/// The greatest magnitude of the sample in the filter's middle and of the signal up to its two
/// neighbours.
float PeakLimiter::peakBehind(std::size_t newest) {
  const StereoSample* window = &line_[newest + 1 - tapCount];
  float between = 0;
  for (const auto& taps : taps_) {
    float left = 0;
    float right = 0;
    for (std::size_t tap = 0; tap < tapCount; ++tap) {
      left += taps[tap] * window[tap].left;
      right += taps[tap] * window[tap].right;
    }
    between = std::max({between, std::abs(left), std::abs(right)});
  }
  const StereoSample middle = window[tapCount / 2 - 1];
  const float before = std::exchange(previousPeak_, between);
  return std::max({before, between, std::abs(middle.left), std::abs(middle.right)});
}

/// The strongest reduction that a sample within the look-ahead needs, let go slowly.
std::int64_t PeakLimiter::heldReduction(std::int64_t index, float peak) {
  if (const std::int64_t reduction = reductionFor(peak); reduction > 0) {
    while (!needs_.isEmpty() && needs_.back().reduction <= reduction) {
      needs_.popBack();
    }
    needs_.pushBack({index, reduction});
  }
  if (!needs_.isEmpty() && needs_.front().index < index - lookAhead) {
    needs_.popFront();
  }
  released_ -= released_ / releaseSamples;
  if (released_ < inaudible) {
    released_ = 0;
  }
  released_ = std::max(released_, needs_.isEmpty() ? 0 : needs_.front().reduction);
  return released_;
}

}  // namespace vesk::media
