#pragma once

#include <glm/vec2.hpp>
#include <span>
#include <vector>

#include "motion/CameraEase.h"
#include "motion/CameraPose.h"
#include "motion/CursorTrack.h"
#include "motion/ZoomSegment.h"
#include "package/StyleSettings.h"

namespace vesk::motion {

/// Seconds between the samples of every track; the constants of its passes are per sample.
inline constexpr double trackStep = 1.0 / 60;

/// Longest path in seconds, a day: a damaged duration must not ask for all memory. Beyond it the
/// last pose stands.
inline constexpr double longestTrack = 24.0 * 60 * 60;

/// The continuous camera path of a recording: 60 poses a second, computed once and then only read.
/// Immutable once built; may be read from any thread.
struct CameraTrack {
  std::vector<CameraPose> samples;
  double t0 = 0;
  double step = trackStep;
  bool operator==(const CameraTrack&) const = default;

  /// The pose at t, interpolated between samples; the first one before t0, the last one after the
  /// end, the default pose for an empty track.
  CameraPose sample(double t) const;
};

/// Builds the path in four passes: keyframes, viewport smoothing, cursor following, perspective.
/// @param duration the recording's effective duration in seconds; not above 0 or not finite
/// gives an empty track.
CameraTrack buildTrack(std::span<const ZoomSegment> segments, const CursorTrack& cursorTrack,
                       double duration, const package::Camera3DSettings& camera3D, CameraEase ease);

/// The segments that take part in a track: enabled and longer than 0.01 s, sorted by start.
std::vector<ZoomSegment> effectiveSegments(std::span<const ZoomSegment> segments);

/// Yaw in degrees that a point of the picture gives a camera of this magnitude at full strength;
/// positive on the right half.
double yawToward(glm::vec2 target, double magnitude);

}  // namespace vesk::motion
