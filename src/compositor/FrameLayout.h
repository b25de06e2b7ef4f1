#pragma once

#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <optional>

#include "motion/CameraPose.h"
#include "package/RecordingMeta.h"
#include "package/StyleSettings.h"

// Where the picture lies on the canvas, and the matrix that takes the picture's plane there.
namespace vesk::compositor {

/// A rectangle in canvas fractions, origin top left.
struct ContentRect {
  glm::vec2 origin{0, 0};
  glm::vec2 size{1, 1};
  bool operator==(const ContentRect&) const = default;
};

/// Picture width over height; 16/9 without a recording or with a height below 1.
double videoAspect(const package::RecordingMeta* meta);

/// The largest rectangle of the picture's aspect on a canvas of this size, less the padding of an
/// enabled frame; the whole canvas without a recording or when the canvas has no area.
ContentRect contentRect(const package::RecordingMeta* meta, const package::FrameStyle& frameStyle,
                        double width, double height);

/// Takes a plane point (u − 0.5, 0.5 − v, 0, 1) to the canvas's clip space; nothing when the pose
/// cannot be solved.
/// @param canvasAspect canvas width over height.
std::optional<glm::mat4> frameMatrix(const package::RecordingMeta* meta,
                                     const motion::CameraPose& pose, const ContentRect& rect,
                                     double canvasAspect);

}  // namespace vesk::compositor
