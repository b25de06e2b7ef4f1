#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "media/Box.h"
#include "media/SampleTable.h"

namespace vesk::media {

/// The index of a complete movie (the box "moov" of ISO/IEC 14496-12) made from that of a movie in
/// fragments: the same tracks with the same edits, now with all their samples and durations.
/// @param unfinished the whole box "moov" in front of the fragments.
/// @param tracks the samples of its tracks; a track without samples is left out.
/// @return nothing where `unfinished` is no such box, a track does not start at zero, or none has
/// samples.
[[nodiscard]] std::optional<std::vector<std::uint8_t>> finishedIndex(
    ByteView unfinished, std::span<const SampleTable> tracks);

}  // namespace vesk::media
