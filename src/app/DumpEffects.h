#pragma once

#include "app/CommandContext.h"

namespace vesk::app {

/// The command `--dump-effects`: writes the motion report of a package. Returns the exit code.
int dumpEffects(const CommandContext& context);

}  // namespace vesk::app
