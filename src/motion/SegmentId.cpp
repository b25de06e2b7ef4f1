#include "motion/SegmentId.h"

#include <fmt/format.h>

#include <cmath>

namespace vesk::motion {

std::string wholeMilliseconds(double t) {
  // Formatted as a double, so that no time is too large; adding zero turns −0 into 0.
  return fmt::format("{:.0f}", std::trunc(t * 1000) + 0.0);
}

}  // namespace vesk::motion
