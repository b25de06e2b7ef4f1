#pragma once

#include <string>

#include "capture/CameraSource.h"

namespace vesk::capture::pipewire {

/// What it means that a camera fails.
/// @param error in the words of the server or the driver. Where somebody else uses the camera they
/// are those of strerror(EBUSY).
[[nodiscard]] CameraRefusal cameraFailure(const std::string& error);

}  // namespace vesk::capture::pipewire
