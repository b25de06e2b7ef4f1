#pragma once

#include <cstdint>

namespace vesk::motion {

/// Seconds from one measured frame to the next.
inline constexpr double frameStep = 1.0 / 60;

/// Calls body(t) for t = first + i × step while t ≤ last. Each time is computed from its number, so
/// that no error adds up over a long recording.
template <typename Body>
void walk(double first, double last, double step, Body body) {
  for (std::int64_t number = 0;; ++number) {
    const double t = first + static_cast<double>(number) * step;
    if (!(t <= last)) return;
    body(t);
  }
}

}  // namespace vesk::motion
