#pragma once

#include <functional>
#include <thread>

#include "capture/Listening.h"

namespace vesk::capture {

/// Calls a function 120 times a second on a thread of its own for as long as it lives. A call that
/// takes longer than its turn makes the next ones fall out; the others keep to the grid.
class PointerSampler final : public Listening {
 public:
  /// @param sample is given the seconds of CLOCK_MONOTONIC.
  explicit PointerSampler(std::function<void(double now)> sample);

 private:
  std::jthread thread_;
};

}  // namespace vesk::capture
