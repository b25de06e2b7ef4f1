#pragma once

#include <glm/vec2.hpp>
#include <optional>
#include <string>
#include <vector>

namespace vesk::motion {

/// One effect on the timeline: the camera leaves its framing at `start`, is framed on `focus` after
/// `easeIn`, and is home (or has handed over) at `end`. Seconds on the recording's clock, positions
/// normalised to the picture with y down.
struct ZoomSegment {
  /// A pan inside the hold: at `t` the camera sets off towards `focus`.
  struct Waypoint {
    double t = 0;
    glm::vec2 focus{0.5F, 0.5F};
    bool operator==(const Waypoint&) const = default;
  };

  std::string id;
  double start = 0;
  double end = 0;
  bool enabled = true;
  std::optional<double> sourceClickTime;
  double level = 2.0;
  glm::vec2 focus{0.5F, 0.5F};
  bool followCursor = true;
  double deadzone = 0.67;
  double followSpeed = 0.3;  ///< picture widths per second
  bool isManual = false;
  bool endsWithExplicitReset = false;
  double easeIn = 0.45;
  double easeOut = 0.55;
  double holdMin = 0.8;
  double motionBlur = 0.35;
  std::vector<Waypoint> waypoints;
  double panDuration = 0.55;
  bool operator==(const ZoomSegment&) const = default;
};

}  // namespace vesk::motion
