#pragma once

#include <cstdint>

namespace vesk::exporting {

/// How the frames of an export came about.
struct ExportStatistics {
  std::int64_t frames = 0;
  std::int64_t sentAgain = 0;      ///< equal to the frame before
  std::int64_t partlyRedrawn = 0;  ///< only what differed was drawn
  std::int64_t fullyRedrawn = 0;
  bool operator==(const ExportStatistics&) const = default;
};

}  // namespace vesk::exporting
