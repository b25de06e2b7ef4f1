#pragma once

#include <filesystem>
#include <optional>
#include <string>
#include <vector>

#include "app/CommandLine.h"
#include "app/window/RootMode.h"
#include "editor/EditorUIState.h"

namespace vesk::app {

/// What the command line asks of the window.
struct WindowFlags {
  std::optional<RootMode> mode;                                 ///< the page
  std::optional<editor::EditorUIState::Category> openCategory;  ///< of the inspector
  std::optional<double> seek;                                   ///< seconds, at each activation
  bool editPoke = false;                                        ///< the scripted edit
  std::optional<std::filesystem::path> package;                 ///< to open, absolute
  bool operator==(const WindowFlags&) const = default;
};

WindowFlags windowFlags(const CommandLine& commandLine);

/// The arguments that ask for the same.
std::vector<std::string> arguments(const WindowFlags& flags);

}  // namespace vesk::app
