#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "motion/CameraEase.h"
#include "motion/CameraPose.h"
#include "motion/ZoomSegment.h"

namespace vesk::motion {

/// Neighbouring segments closer than both limits, in seconds and in picture units, are joined.
inline constexpr double joinGap = 1.5;
inline constexpr float joinDistance = 0.6F;

/// Whether the camera goes from one segment straight to the next instead of home in between.
bool areJoined(const ZoomSegment& earlier, const ZoomSegment& later);

/// First pass of a camera track: `count` flat poses that lead from keyframe to keyframe.
/// @param segments at least one, sorted by start.
std::vector<CameraPose> keyframePass(std::span<const ZoomSegment> segments, std::size_t count,
                                     double fov, CameraEase ease);

}  // namespace vesk::motion
