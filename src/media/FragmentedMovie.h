#pragma once

#include <cstdint>
#include <expected>
#include <vector>

#include "media/RandomAccessFile.h"
#include "media/SampleTable.h"

namespace vesk::media {

/// A movie in fragments (ISO/IEC 14496-12, section 8.8) as far as its file goes: an empty index,
/// then fragments, of which the last may have been cut off.
struct FragmentedMovie {
  std::uint64_t indexPosition = 0;
  std::vector<std::uint8_t> index;  ///< the whole box "moov"
  std::vector<SampleTable> tracks;  ///< in the order of the index; may have no samples
  std::uint64_t end = 0;            ///< in the file, of the last complete fragment

  /// EINVAL for a file that is none, or in a form in which this system writes none.
  [[nodiscard]] static std::expected<FragmentedMovie, int> read(const RandomAccessFile& file);
};

}  // namespace vesk::media
