#pragma once

#include <optional>

#include "compositor/CompositeSettings.h"
#include "compositor/FrameLayout.h"
#include "compositor/UniformRecords.h"
#include "motion/CursorTrack.h"
#include "package/RecordingMeta.h"

namespace vesk::compositor {

/// Size factor of the cursor `age` seconds after the last click: pressed in over 0.1 s to
/// 1 − amount, and back over 0.22 s.
double clickShrinkFactor(double age, double amount);

/// The cursor at a time of the recording; nothing when it is hidden, unknown or behind the camera.
/// @param matrix the frame matrix of the pose.
/// @param framing the pose's zoom factor, with which the cursor grows.
std::optional<CursorUniforms> cursorUniforms(const package::CursorSettings& settings,
                                             const package::RecordingMeta& meta,
                                             const motion::CursorTrack& track,
                                             const glm::mat4& matrix, double framing, double time,
                                             const ContentRect& rect);

}  // namespace vesk::compositor
