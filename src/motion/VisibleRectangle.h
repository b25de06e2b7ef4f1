#pragma once

#include <glm/vec2.hpp>

#include "motion/CameraTrack.h"

namespace vesk::motion {

/// The bounding box of what a frame shows of the picture, normalised, y down. What the viewer sees
/// is measured on it and not on the camera's target, which the fill solver may move.
struct VisibleRectangle {
  glm::vec2 low{0, 0};
  glm::vec2 high{1, 1};
  bool operator==(const VisibleRectangle&) const = default;

  glm::dvec2 size() const { return glm::dvec2(high) - glm::dvec2(low); }
};

/// The box at t. A pose that cannot be solved counts as showing the whole picture.
/// @param aspect of picture and frame alike, width over height.
VisibleRectangle visibleRectangle(const CameraTrack& track, double t, double aspect);

double distance(glm::vec2 a, glm::vec2 b);

/// How far the box moved, in picture units: the larger of the distances of its top left and its
/// bottom right corner. Between two successive frames this is the speed of the camera.
double travel(const VisibleRectangle& from, const VisibleRectangle& to);

}  // namespace vesk::motion
