#pragma once

#include <glm/common.hpp>
#include <glm/vec2.hpp>

namespace vesk::motion {

/// What a camera square to the picture sees: the part of the picture from `origin` on, `width`
/// picture widths wide and as many picture heights high. Easing viewports rather than zooms and
/// centres keeps the picture's edges out of sight on the way.
struct Viewport {
  double width = 1;
  glm::vec2 origin{0.0F, 0.0F};

  glm::vec2 centre() const { return origin + static_cast<float>(width / 2); }
};

/// The viewport of this width around a centre, pushed back inside the picture.
inline Viewport viewportInside(double width, glm::vec2 centre) {
  const auto half = static_cast<float>(width / 2);
  return {.width = width, .origin = glm::min(glm::max(centre, half), 1.0F - half) - half};
}

}  // namespace vesk::motion
