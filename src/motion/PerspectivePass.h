#pragma once

#include <vector>

#include "motion/CameraPose.h"
#include "package/StyleSettings.h"

namespace vesk::motion {

/// Fourth pass of a camera track: tilts the camera towards the side that each sample looks at, the
/// more the deeper the zoom, and smooths the angles over 11 samples. Changes the angles only.
std::vector<CameraPose> tiltCamera(std::vector<CameraPose> samples,
                                   const package::Camera3DSettings& camera3D);

}  // namespace vesk::motion
