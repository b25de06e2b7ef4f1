#pragma once

#include <chrono>

#include "media/HostTime.h"

namespace vesk::capture::x11 {

/// CLOCK_MONOTONIC, which is the steady clock of the standard library.
inline media::HostTime monotonicNow() {
  return std::chrono::steady_clock::now().time_since_epoch();
}

}  // namespace vesk::capture::x11
