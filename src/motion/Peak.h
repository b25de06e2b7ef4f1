#pragma once

#include <optional>

namespace vesk::motion {

/// The largest value of a walk and the first time it occurred; nothing above 0 leaves no time.
struct Peak {
  double value = 0;
  std::optional<double> at;

  void offer(double candidate, double t) {
    if (candidate > value) {
      value = candidate;
      at = t;
    }
  }
};

}  // namespace vesk::motion
