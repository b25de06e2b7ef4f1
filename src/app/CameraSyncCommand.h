#pragma once

#include <filesystem>
#include <optional>
#include <string>

#include "app/CommandContext.h"

namespace vesk::app {

/// How the end of a recording lies on the camera's file. Seconds.
struct CameraEnd {
  double duration = 0;      ///< of the recording
  double cameraOffset = 0;  ///< how much later than the screen the camera started
  double cameraLength = 0;  ///< of "camera.mov"
};

/// The lines that tell whether the end of the recording meets the end of the camera's file.
std::string cameraEndReport(const CameraEnd& end);

/// The newest package of a folder that holds a camera's file.
std::optional<std::filesystem::path> newestCameraPackage(const std::filesystem::path& root);

/// Opens a recording with a camera, plays some seconds of it and prints how well camera and
/// microphone follow the screen. On the main thread.
int diagnoseCameraSync(const CommandContext& context);

}  // namespace vesk::app
