#include "capture/PointerSampler.h"

#include <pthread.h>

#include <cstdint>
#include <ctime>
#include <utility>

#include "capture/SampleSchedule.h"

namespace vesk::capture {
namespace {

constexpr std::int64_t samplesPerSecond = 120;
constexpr std::int64_t nanosecondsInSecond = 1'000'000'000;

std::int64_t monotonicNow() {
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC, &time);
  return time.tv_sec * nanosecondsInSecond + time.tv_nsec;
}

/// May return early on a signal.
void sleepUntil(std::int64_t deadline) {
  const timespec time{.tv_sec = deadline / nanosecondsInSecond,
                      .tv_nsec = deadline % nanosecondsInSecond};
  ::clock_nanosleep(CLOCK_MONOTONIC, TIMER_ABSTIME, &time, nullptr);
}

void sampleUntil(const std::stop_token& stop, const std::function<void(double now)>& sample) {
  ::pthread_setname_np(::pthread_self(), "vesk.pointer");
  SampleSchedule schedule{monotonicNow(), samplesPerSecond};
  while (!stop.stop_requested()) {
    sleepUntil(schedule.deadline());
    const std::int64_t now = monotonicNow();
    if (now < schedule.deadline()) continue;
    if (stop.stop_requested()) return;
    sample(static_cast<double>(now) * 1e-9);
    schedule.advance(monotonicNow());
  }
}

}  // namespace

PointerSampler::PointerSampler(std::function<void(double now)> sample)
    : thread_{[sample = std::move(sample)](const std::stop_token& stop) {
        sampleUntil(stop, sample);
      }} {}

}  // namespace vesk::capture
