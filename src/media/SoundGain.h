#pragma once

#include <algorithm>
#include <cmath>

namespace vesk::media {

/// The most that a track of sound is made louder by, a factor.
inline constexpr double strongestGain = 2;

/// The factor, of 0…strongestGain, that a wish for one comes to: what is beyond counts as the
/// nearest of these, what is no number as 1.
[[nodiscard]] inline double usedGain(double wished) {
  return std::isnan(wished) ? 1.0 : std::clamp(wished, 0.0, strongestGain);
}

}  // namespace vesk::media
