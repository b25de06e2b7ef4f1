#pragma once

#include <optional>
#include <span>
#include <string_view>

#include "app/CommandContext.h"

namespace vesk::app {

/// One command of the hidden command line.
struct Command {
  std::string_view flag;
  bool needsValue = false;                      ///< without a value the command counts as absent
  int (*run)(const CommandContext&) = nullptr;  ///< returns the exit code of the process
};

/// All commands, in the order in which they are looked for.
std::span<const Command> commands();

/// Runs the first command of that order that is present. Returns the exit code, or nothing when
/// there is no command and the process should go on.
std::optional<int> dispatch(const CommandContext& context);

}  // namespace vesk::app
