#pragma once

#include "app/CommandContext.h"

namespace vesk::app {

/// The command `--export <path>`: renders a recording into a movie without a window. Returns the
/// exit code.
int exportMovie(const CommandContext& context);

}  // namespace vesk::app
