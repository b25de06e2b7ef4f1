#pragma once

#include <functional>
#include <memory>

#include "app/CommandLine.h"
#include "editor/SoundOutput.h"
#include "package/RecordingLibrary.h"

namespace vesk::app {

/// What the window needs of the process around it.
struct WindowSurroundings {
  const CommandLine& commandLine;
  std::function<package::RecordingLibrary&()> library;
  std::function<std::unique_ptr<editor::SoundOutput>()> openSound;
};

/// Runs the application with its window until the user quits it, or hands over to a process that
/// has the window already. On the main thread, before any other thread was started.
/// @param argc, argv of main; stay valid and may be changed.
/// @return the exit code of the process.
int runWindow(int& argc, char** argv, const WindowSurroundings& surroundings);

}  // namespace vesk::app
