#include "capture/x11/FrameClock.h"

#include <algorithm>
#include <chrono>
#include <utility>

#include "capture/x11/MonotonicNow.h"

namespace vesk::capture::x11 {

FrameClock::FrameClock(int fps) : schedule_{monotonicNow().count(), std::max(fps, 1)} {}

bool FrameClock::wait(const std::stop_token& stop) {
  if (!std::exchange(isFirst_, false)) schedule_.advance(monotonicNow().count());
  const std::chrono::steady_clock::time_point turn{media::HostTime{schedule_.deadline()}};
  std::unique_lock lock{mutex_};
  stopped_.wait_until(lock, stop, turn, [] { return false; });
  return !stop.stop_requested();
}

}  // namespace vesk::capture::x11
