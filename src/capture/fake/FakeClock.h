#pragma once

#include <atomic>

#include "capture/Clock.h"

namespace vesk::capture::fake {

/// A clock that stands until it is moved.
class FakeClock final : public Clock {
 public:
  explicit FakeClock(double seconds = 1000) : seconds_{seconds} {}

  double now() const override { return seconds_; }
  void advance(double seconds) { seconds_ = seconds_ + seconds; }

 private:
  std::atomic<double> seconds_;
};

}  // namespace vesk::capture::fake
