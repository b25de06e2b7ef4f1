#pragma once

#include "compositor/UniformRecords.h"
#include "package/StyleSettings.h"

namespace vesk::compositor {

/// Width over height of a camera picture in pixels; 16/9 for one without height.
double cameraAspect(int width, int height);

/// The camera's window on the canvas. It lies on the canvas itself: neither the camera movement nor
/// the frame's padding moves it.
/// @param cameraAspect width over height of the camera's picture.
PiPUniforms pipUniforms(const package::PiPSettings& settings, double cameraAspect, int width,
                        int height);

}  // namespace vesk::compositor
