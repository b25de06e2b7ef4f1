#pragma once

#include <glm/vec2.hpp>
#include <vector>

#include "package/RecordingProject.h"

namespace vesk::motion {

/// The recorded cursor path and its smoothing. The filter is a Gaussian in time that fades out
/// around clicks, so that the cursor is exactly where the user clicked. Positions normalised, y
/// down; times in seconds. Immutable once built; may be read from any thread.
struct CursorTrack {
  struct Sample {
    double t = 0;
    glm::vec2 p{0.5F, 0.5F};
    bool operator==(const Sample&) const = default;
  };

  std::vector<Sample> samples;     ///< sorted by time
  std::vector<double> clickTimes;  ///< ascending
  double anchorWindow = 0.08;      ///< half-width in seconds of the zone around a click

  CursorTrack() = default;
  explicit CursorTrack(const package::RecordingProject& project);

  /// The raw interpolated position. Needs at least one sample.
  glm::vec2 position(double t) const;
  /// The smoothing strength that applies at t.
  double effectiveStrength(double t, double strength) const;
  /// The smoothed position; the centre when there are no samples.
  /// @param window seconds.
  glm::vec2 smoothed(double t, double strength, double window) const;

  bool operator==(const CursorTrack&) const = default;
};

}  // namespace vesk::motion
