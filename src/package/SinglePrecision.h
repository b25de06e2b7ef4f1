#pragma once

#include <algorithm>
#include <limits>

namespace vesk::package {

/// A number of a file in single precision. One beyond its range becomes the nearest there is, so
/// that what was finite stays finite and can be written again.
constexpr float singlePrecision(double number) {
  constexpr double largest = std::numeric_limits<float>::max();
  return static_cast<float>(std::clamp(number, -largest, largest));
}

}  // namespace vesk::package
