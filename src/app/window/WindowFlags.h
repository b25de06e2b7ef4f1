#pragma once

#include <filesystem>
#include <optional>

#include "app/CommandLine.h"
#include "app/window/RootMode.h"
#include "editor/EditorUIState.h"

namespace vesk::app {

/// What the command line asks of the window.
struct WindowFlags {
  RootMode mode = RootMode::record;                             ///< to start with
  std::optional<editor::EditorUIState::Category> openCategory;  ///< of the inspector
  std::optional<double> seek;                                   ///< seconds, at each activation
  bool editPoke = false;                                        ///< the scripted edit
  std::optional<std::filesystem::path> package;                 ///< to open, absolute
  bool operator==(const WindowFlags&) const = default;
};

WindowFlags windowFlags(const CommandLine& commandLine);

}  // namespace vesk::app
