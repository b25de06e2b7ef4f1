#pragma once

#include <vector>

#include "motion/ZoomSegment.h"
#include "package/RecordingProject.h"

namespace vesk::motion {

/// The segments of the zoom-in and reset marks pressed during the take, sorted by start and never
/// overlapping.
std::vector<ZoomSegment> pairManualMarks(const package::RecordingProject& project);

}  // namespace vesk::motion
