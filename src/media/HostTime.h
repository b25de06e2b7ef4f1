#pragma once

#include <chrono>

namespace vesk::media {

/// An instant on the clock that stamps every stream of a take (CLOCK_MONOTONIC), since its origin.
using HostTime = std::chrono::nanoseconds;

/// Now, on that clock, which is the steady clock of the standard library. On any thread.
[[nodiscard]] inline HostTime monotonicTime() {
  return std::chrono::duration_cast<HostTime>(std::chrono::steady_clock::now().time_since_epoch());
}

[[nodiscard]] constexpr double secondsOf(HostTime time) {
  return std::chrono::duration<double>(time).count();
}

}  // namespace vesk::media
