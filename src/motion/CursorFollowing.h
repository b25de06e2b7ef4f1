#pragma once

#include <span>
#include <vector>

#include "motion/CameraEase.h"
#include "motion/CameraPose.h"
#include "motion/CursorTrack.h"
#include "motion/ZoomSegment.h"

namespace vesk::motion {

/// Third pass of a camera track: pans to waypoints, and follows the cursor while a segment holds.
/// Changes `target` only.
/// @param segments as effectiveSegments gives them.
/// @param perspective the camera turns towards the cursor's side, so it follows up and down only.
std::vector<CameraPose> followCursor(std::vector<CameraPose> samples,
                                     std::span<const ZoomSegment> segments,
                                     const CursorTrack& cursorTrack, CameraEase ease,
                                     bool perspective);

}  // namespace vesk::motion
