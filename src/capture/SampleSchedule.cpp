#include "capture/SampleSchedule.h"

#include <algorithm>

namespace vesk::capture {
namespace {

constexpr std::int64_t second = 1'000'000'000;

}  // namespace

SampleSchedule::SampleSchedule(std::int64_t start, std::int64_t samplesPerSecond)
    : start_{start}, samplesPerSecond_{samplesPerSecond} {}

// Each point is computed from the start, so that the fractions of a nanosecond do not add up.
std::int64_t SampleSchedule::deadline() const {
  const std::int64_t seconds = index_ / samplesPerSecond_;
  const std::int64_t samples = index_ % samplesPerSecond_;
  return start_ + seconds * second + samples * second / samplesPerSecond_;
}

void SampleSchedule::advance(std::int64_t now) {
  const std::int64_t seconds = (now - start_) / second;
  const std::int64_t rest = (now - start_) % second;
  const std::int64_t begun = seconds * samplesPerSecond_ + rest * samplesPerSecond_ / second;
  index_ = std::max(index_ + 1, begun);
  while (deadline() <= now) ++index_;
}

}  // namespace vesk::capture
