#include "motion/VisibleRectangle.h"

#include <algorithm>
#include <glm/common.hpp>
#include <glm/geometric.hpp>
#include <optional>

#include "motion/CameraPose.h"

namespace vesk::motion {

VisibleRectangle visibleRectangle(const CameraTrack& track, double t, double aspect) {
  const std::optional<SolvedCamera> solved = track.sample(t).clamped(aspect).solve(aspect, aspect);
  if (!solved) {
    return {};
  }
  const auto corners = solved->pose.visibleCorners(solved->distance, aspect, aspect);
  if (!corners) {
    return {};
  }
  VisibleRectangle box{corners->front(), corners->front()};
  for (const glm::vec2& corner : *corners) {
    box.low = glm::min(box.low, corner);
    box.high = glm::max(box.high, corner);
  }
  return box;
}

double distance(glm::vec2 a, glm::vec2 b) {
  return glm::distance(glm::dvec2(a), glm::dvec2(b));
}

double travel(const VisibleRectangle& from, const VisibleRectangle& to) {
  return std::max(distance(from.low, to.low), distance(from.high, to.high));
}

}  // namespace vesk::motion
