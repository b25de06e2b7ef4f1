#pragma once

#include <cstdint>
#include <variant>

namespace vesk::package {

/// A rectangle in points, origin and size.
struct Rect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
  bool operator==(const Rect&) const = default;
};

/// What a take records.
struct CaptureScope {
  struct Display {
    std::uint32_t id = 0;
    bool operator==(const Display&) const = default;
  };
  struct Window {
    std::uint32_t id = 0;
    bool operator==(const Window&) const = default;
  };
  struct Region {
    std::uint32_t displayID = 0;
    Rect rect;  ///< display-local points
    bool operator==(const Region&) const = default;
  };

  std::variant<Display, Window, Region> value = Display{};
  bool operator==(const CaptureScope&) const = default;
};

}  // namespace vesk::package
