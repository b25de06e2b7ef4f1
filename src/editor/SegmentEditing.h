#pragma once

#include <cstdint>
#include <glm/vec2.hpp>
#include <optional>
#include <span>

#include "motion/ZoomSegment.h"

// How segments come to be by hand. Pure functions; times in seconds on the recording's clock.
namespace vesk::editor {

/// A segment of 4.5 s around `time`, which stands at 35 % of it, cut to the recording.
/// @param focus what the camera is to look at.
/// @param duration the recording's effective duration.
/// @return nothing when it would overlap one of `existing`.
std::optional<motion::ZoomSegment> newSegment(std::span<const motion::ZoomSegment> existing,
                                              double time, glm::vec2 focus, double duration);

/// A copy that follows the segment after a short pause.
/// @param milliseconds since 1970: the copy's identity.
/// @return nothing when it would not end within the recording.
std::optional<motion::ZoomSegment> duplicateOf(const motion::ZoomSegment& segment, double duration,
                                               std::int64_t milliseconds);

/// The first segment that holds `time`, ends included; null when there is none.
const motion::ZoomSegment* segmentAt(std::span<const motion::ZoomSegment> segments, double time);

}  // namespace vesk::editor
