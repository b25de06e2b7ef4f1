#pragma once

#include <array>
#include <cstdint>
#include <string_view>

namespace vesk::app {

/// The pages of the window.
enum class RootMode : std::uint8_t { record, library, edit };

inline constexpr std::array allRootModes{RootMode::record, RootMode::library, RootMode::edit};

/// What the page's tab reads.
constexpr std::string_view rawValue(RootMode mode) {
  switch (mode) {
    case RootMode::record:
      return "录制";
    case RootMode::library:
      return "录制库";
    case RootMode::edit:
      break;
  }
  return "编辑";
}

}  // namespace vesk::app
