#pragma once

#include <expected>
#include <memory>
#include <string>

#include "capture/CaptureBackends.h"

namespace vesk::app {

/// The backends for the desktop on which this process runs, the best there are. To be opened before
/// the program's first window is shown. The error is for the user.
std::expected<capture::CaptureBackends, std::string> openDesktopBackends();

/// The cameras of this machine, whatever its desktop.
std::unique_ptr<capture::CameraSource> openCameras();

}  // namespace vesk::app
