#pragma once

#include <span>
#include <vector>

#include "compositor/FrameLayout.h"
#include "compositor/UniformRecords.h"
#include "package/RecordedEvent.h"
#include "package/StyleSettings.h"

namespace vesk::compositor {

/// Ripples that are shown at once; the first in the order of the clicks are kept.
inline constexpr std::size_t maxRipples = 24;

/// The ripples that are active at a time of the recording.
/// @param clicks in ascending order of time.
/// @param matrix the frame matrix of the pose; `framing` its zoom factor.
/// @param canvasAspect canvas width over height.
std::vector<RippleInstance> rippleInstances(const package::RippleSettings& settings,
                                            std::span<const package::RecordedEvent> clicks,
                                            const glm::mat4& matrix, double framing, double time,
                                            const ContentRect& rect, double canvasAspect);

}  // namespace vesk::compositor
