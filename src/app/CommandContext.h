#pragma once

#include <cstdio>
#include <filesystem>
#include <functional>
#include <memory>

#include "app/CameraCheck.h"
#include "app/CaptureStage.h"
#include "app/CommandLine.h"
#include "editor/SoundOutput.h"
#include "package/RecordingLibrary.h"
#include "package/RecordingMeta.h"

namespace vesk::app {

/// What a command may use of the process around it.
struct CommandContext {
  CommandLine commandLine;
  std::FILE* out = stdout;
  package::Timestamp now{};
  /// The folder of the recordings. Asked for only when no package is named, since it reads the
  /// user's settings.
  std::function<std::filesystem::path()> libraryRoot;
  /// The compositor's frame layout; may be empty.
  PictureLayout pictureLayout;
  /// Makes what a command needs to record on this machine.
  MakeCaptureStage makeCaptureStage;
  /// The library of recordings, and where an editor session is heard.
  std::function<package::RecordingLibrary&()> library;
  std::function<std::unique_ptr<editor::SoundOutput>()> openSound;
  /// The cameras of this machine.
  std::function<std::unique_ptr<capture::CameraSource>()> openCameras;
};

}  // namespace vesk::app
