#include "compositor/CameraOverlay.h"

#include <algorithm>

namespace vesk::compositor {

double cameraAspect(int width, int height) {
  return height < 1 ? 16.0 / 9 : static_cast<double>(width) / height;
}

PiPUniforms pipUniforms(const package::PiPSettings& settings, double cameraAspect, int width,
                        int height) {
  const bool isCircle = settings.shape == package::PiPSettings::Shape::circle;
  const double aspect = width / std::max(static_cast<double>(height), 1.0);
  const double halfHeight = settings.size / 2;
  const double halfWidth = (isCircle ? halfHeight : cameraAspect * halfHeight) / aspect;
  return {.center = settings.center,
          .halfSize = glm::vec2(halfWidth, halfHeight),
          .cornerRadius = isCircle ? 0.5F : static_cast<float>(settings.cornerRadius),
          .border = static_cast<float>(settings.border),
          .shadow = static_cast<float>(settings.shadow),
          .aspect = static_cast<float>(aspect),
          .mirrored = settings.mirrored ? 1.0F : 0.0F,
          .camAspect = static_cast<float>(cameraAspect)};
}

}  // namespace vesk::compositor
