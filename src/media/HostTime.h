#pragma once

#include <chrono>

namespace vesk::media {

/// An instant on the clock that stamps every stream of a take (CLOCK_MONOTONIC), since its origin.
using HostTime = std::chrono::nanoseconds;

[[nodiscard]] constexpr double secondsOf(HostTime time) {
  return std::chrono::duration<double>(time).count();
}

}  // namespace vesk::media
