#pragma once

#include <cstdint>

// Sizes in bytes beyond which a file of a package is no recording's, and reading it would only fill
// the memory: an index has some hundred bytes, an hour's event log some 40 MB.
namespace vesk::package {

inline constexpr std::uintmax_t largestMetaFile = std::uintmax_t{4} << 20;
inline constexpr std::uintmax_t largestEventLogFile = std::uintmax_t{2} << 30;

}  // namespace vesk::package
