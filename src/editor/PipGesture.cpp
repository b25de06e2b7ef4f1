#include "editor/PipGesture.h"

#include <algorithm>
#include <cmath>
#include <numbers>

namespace vesk::editor {
namespace {

constexpr double roundedAspect = 16.0 / 9.0;
/// Of a direction to the bottom right, along each axis.
constexpr double diagonal = 0.5 * std::numbers::sqrt2;

double withinStage(double center, double half) {
  if (half > 0.5) return 0.5;
  return std::clamp(center, half, 1 - half);
}

}  // namespace

double PipGesture::aspect() const {
  return stage_.width / std::max(stage_.height, 1.0);
}

double PipGesture::halfHeight() const {
  return pip_.size / 2;
}

double PipGesture::halfWidth() const {
  const bool isCircle = pip_.shape == package::PiPSettings::Shape::circle;
  return (isCircle ? halfHeight() : halfHeight() * roundedAspect) / aspect();
}

bool PipGesture::reaches(StagePoint pointer) const {
  return stage_.width > 0 && stage_.height > 0 && std::isfinite(pointer.x) &&
         std::isfinite(pointer.y);
}

StageRect PipGesture::rect() const {
  if (!reaches({})) return {};
  return {.x = stage_.width * (pip_.center.x - halfWidth()),
          .y = stage_.height * (pip_.center.y - halfHeight()),
          .width = stage_.width * 2 * halfWidth(),
          .height = stage_.height * 2 * halfHeight()};
}

StagePoint PipGesture::handle() const {
  if (!reaches({})) return {};
  return {.x = stage_.width * (pip_.center.x + diagonal * halfWidth()),
          .y = stage_.height * (pip_.center.y + diagonal * halfHeight())};
}

package::PiPSettings PipGesture::moved(StagePoint pointer) const {
  package::PiPSettings pip = pip_;
  if (!reaches(pointer)) return pip;
  pip.center = {withinStage(pointer.x / stage_.width, halfWidth()),
                withinStage(pointer.y / stage_.height, halfHeight())};
  return pip;
}

package::PiPSettings PipGesture::resized(StagePoint pointer) const {
  package::PiPSettings pip = pip_;
  if (!reaches(pointer)) return pip;
  // In heights of the stage, so that both axes count alike.
  const double pointerDistance = std::hypot((pointer.x / stage_.width - pip_.center.x) * aspect(),
                                            pointer.y / stage_.height - pip_.center.y);
  const double handleDistance = diagonal * std::hypot(halfWidth() * aspect(), halfHeight());
  pip.size =
      std::clamp(pointerDistance / std::max(handleDistance, 0.0001) * pip_.size, smallest, largest);
  return pip;
}

}  // namespace vesk::editor
