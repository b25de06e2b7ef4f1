#pragma once

#include "app/CommandContext.h"

namespace vesk::app {

/// `--diag-hotkeys`: whether the two key combinations of the manual marks reach this program.
int diagnoseHotKeys(const CommandContext& context);

}  // namespace vesk::app
