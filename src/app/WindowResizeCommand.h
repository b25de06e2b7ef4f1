#pragma once

#include "app/CommandContext.h"
#include "app/SelfCheck.h"
#include "capture/Geometry.h"

namespace vesk::app {

/// `--diag-window-resize`: whether a take notices that its window is resized.
int diagnoseWindowResize(const CommandContext& context);

/// What a take of a window that had these sizes says.
CheckOutcome windowResizeVerdict(const capture::ScreenSize& before,
                                 const capture::ScreenSize& after, std::int64_t changes);

}  // namespace vesk::app
