#pragma once

#include "app/CommandContext.h"
#include "app/SelfCheck.h"
#include "capture/DisplayGeometry.h"

namespace vesk::app {

/// `--test-window-frames`: whether every window on the screen is looked up at a place on a display.
int testWindowFrames(const CommandContext& context);

CheckOutcome checkWindowFrames(const capture::DisplayGeometry& geometry);

}  // namespace vesk::app
