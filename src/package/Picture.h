#pragma once

#include <cstdint>
#include <vector>

namespace vesk::package {

/// A small still picture for the user interface.
struct Picture {
  int width = 0;
  int height = 0;
  /// Red, green and blue of each pixel in sRGB, the top row first and without gaps: 3 × width ×
  /// height bytes.
  std::vector<std::uint8_t> pixels;
  bool operator==(const Picture&) const = default;
};

}  // namespace vesk::package
