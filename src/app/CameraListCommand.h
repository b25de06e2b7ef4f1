#pragma once

#include "app/CommandContext.h"

namespace vesk::app {

/// `--camera-check`: which cameras this machine has, and whether they may be used.
int listCameras(const CommandContext& context);

}  // namespace vesk::app
