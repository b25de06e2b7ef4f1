#include "capture/Clock.h"

#include <ctime>

namespace vesk::capture {

double MonotonicClock::now() const {
  timespec time{};
  ::clock_gettime(CLOCK_MONOTONIC, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

}  // namespace vesk::capture
