#pragma once

#include <cstdint>

namespace vesk::capture {

/// When to take samples at a steady rate: on a grid that does not drift, and without catching up
/// on what was missed. Times are nanoseconds.
class SampleSchedule {
 public:
  /// The first sample is due at the start.
  SampleSchedule(std::int64_t start, std::int64_t samplesPerSecond);

  /// When the next sample is due.
  std::int64_t deadline() const;

  /// Moves on after a sample that was taken at `now`, to the next point of the grid in the future.
  void advance(std::int64_t now);

 private:
  std::int64_t start_;
  std::int64_t samplesPerSecond_;
  std::int64_t index_ = 0;
};

}  // namespace vesk::capture
