#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "media/StereoSample.h"

namespace vesk::media {

/// Keeps sound below full scale, peaks between the samples included: those of the continuous
/// signal, estimated as in ITU-R BS.1770-4, Annex 2, but at eight times the rate. It looks ahead,
/// so it turns the sound down smoothly before a peak arrives, by the same factor on both sides, and
/// up again after it. Away from such peaks (5 ms before, a second after) samples pass bit for bit.
/// Samples that are no numbers, or absurdly large, become silence. Once made, it allocates nothing
/// but what is appended.
class PeakLimiter {
 public:
  PeakLimiter();

  /// Forgets what was pushed, as if it were new.
  void reset();

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

  /// A queue of as many as can be: one for each sample of the look-ahead, the one that is just
  /// leaving it among them.
  class Needs {
   public:
    [[nodiscard]] bool isEmpty() const { return count_ == 0; }
    [[nodiscard]] const Need& front() const { return ring_[first_]; }
    [[nodiscard]] const Need& back() const { return ring_[slot(count_ - 1)]; }
    void pushBack(const Need& need) { ring_[slot(count_++)] = need; }
    void popBack() { --count_; }
    void popFront() {
      first_ = slot(1);
      --count_;
    }

   private:
    [[nodiscard]] std::size_t slot(std::size_t place) const {
      return (first_ + place) % ring_.size();
    }

    std::array<Need, lookAhead + 2> ring_{};
    std::size_t first_ = 0;
    std::size_t count_ = 0;
  };

  void dropSpent();
  void take(StereoSample sample, std::vector<StereoSample>& out);
  float peakBehind(std::size_t newest);
  std::int64_t heldReduction(std::int64_t index, float peak);

  std::array<std::array<float, tapCount>, phaseCount> taps_{};
  float quiet_ = 0;  ///< below it, no peak between samples can exceed full scale

  std::vector<StereoSample> line_;  ///< samples that are still needed, and some that are not
  std::int64_t lineStart_ = 0;      ///< index of the first of them
  std::int64_t loudUntil_ = 0;      ///< the filter may find peaks for newest samples up to this one
  float previousPeak_ = 0;          ///< between the two samples before
  Needs needs_;                     ///< falling reductions of the look-ahead
  std::int64_t released_ = 0;
  RunningSum<firstLength> first_;
  RunningSum<secondLength> second_;
};

}  // namespace vesk::media
