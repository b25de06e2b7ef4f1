#pragma once

#include <algorithm>
#include <glm/vec2.hpp>

namespace vesk::motion {

/// A logged position in single precision. Coordinates further out than any arithmetic on squares
/// of distances can hold are cut back, so that a senseless log cannot make the camera infinite.
inline glm::vec2 picturePoint(double x, double y) {
  constexpr double farthest = 1e18;
  return {static_cast<float>(std::clamp(x, -farthest, farthest)),
          static_cast<float>(std::clamp(y, -farthest, farthest))};
}

}  // namespace vesk::motion
