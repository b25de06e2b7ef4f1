#pragma once

#include <vector>

#include "motion/EffectTimeline.h"
#include "motion/ZoomSegment.h"
#include "package/RecordingProject.h"

// Inference of effect segments from a recording's input log. Pure functions; nothing fails: what
// the log does not hold gives no segments.
namespace vesk::motion {

/// All segments of a recording: those of the manual marks, and, with `useAutoDetection`, those of
/// the clicks that no manual segment overlaps; sorted by start.
std::vector<ZoomSegment> combinedSegments(const package::RecordingProject& project,
                                          Sensitivity sensitivity, bool useAutoDetection);

/// The segments inferred from clicks. Linear in clicks and application changes.
std::vector<ZoomSegment> inferAutoSegments(const package::RecordingProject& project,
                                           Sensitivity sensitivity);

}  // namespace vesk::motion
