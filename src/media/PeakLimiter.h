#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <deque>
#include <span>
#include <vector>

#include "media/StereoSample.h"

namespace vesk::media {

/// Keeps sound below full scale, peaks between the samples included: those of the continuous
/// signal, estimated as in ITU-R BS.1770-4, Annex 2, but at eight times the rate. It looks ahead,
/// so it turns the sound down smoothly before a peak arrives, by the same factor on both sides, and
/// up again after it. Away from such peaks (5 ms before, a second after) samples pass bit for bit.
/// Samples that are no numbers, or absurdly large, become silence.
class PeakLimiter {
 public:
  PeakLimiter();

  /// Takes the next samples in and appends to `out` those that are ready.
  void push(std::span<const StereoSample> in, std::vector<StereoSample>& out);

  /// Appends the rest: in all as many samples have come out as went in, each in its place. Nothing
  /// may be pushed afterwards.
  void finish(std::vector<StereoSample>& out);

 private:
  static constexpr std::size_t tapCount = 32;
  static constexpr std::size_t phaseCount = 7;  ///< between two samples
  static constexpr std::size_t firstLength = 121;
  static constexpr std::size_t secondLength = 120;
  static constexpr std::int64_t lookAhead = firstLength + secondLength - 2;

  /// Mean over the latest samples, times their number; in whole numbers it does not drift.
  template <std::size_t length>
  class RunningSum {
   public:
    std::int64_t next(std::int64_t value) {
      sum_ += value - ring_[at_];
      ring_[at_] = value;
      at_ = (at_ + 1) % length;
      return sum_;
    }

   private:
    std::array<std::int64_t, length> ring_{};
    std::size_t at_ = 0;
    std::int64_t sum_ = 0;
  };

  struct Need {
    std::int64_t index = 0;
    std::int64_t reduction = 0;
  };

  void take(StereoSample sample, std::vector<StereoSample>& out);
  float peakBehind(std::size_t newest);
  std::int64_t heldReduction(std::int64_t index, float peak);

  std::array<std::array<float, tapCount>, phaseCount> taps_{};
  float quiet_ = 0;  ///< below it, no peak between samples can exceed full scale

  std::vector<StereoSample> line_;  ///< samples that are still needed
  std::int64_t lineStart_;          ///< index of the first of them
  std::int64_t loudUntil_;          ///< the filter may find peaks for newest samples up to this one
  float previousPeak_ = 0;          ///< between the two samples before
  std::deque<Need> needs_;          ///< falling reductions of the look-ahead
  std::int64_t released_ = 0;
  RunningSum<firstLength> first_;
  RunningSum<secondLength> second_;
};

}  // namespace vesk::media
