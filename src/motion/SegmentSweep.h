#pragma once

#include <cstddef>
#include <functional>
#include <optional>
#include <queue>
#include <span>
#include <vector>

#include "motion/ZoomSegment.h"

namespace vesk::motion {

/// Walks the pans of one segment in time: at each instant, which of its waypoints the camera is on
/// the way to. Where pans overlap or stand out of order, the one listed first counts. The cost of a
/// whole walk is that of sorting the waypoints, however many instants are asked for.
class WaypointSweep {
 public:
  WaypointSweep() = default;
  /// @param segment must outlive the sweep.
  explicit WaypointSweep(const ZoomSegment& segment);

  /// The index of the waypoint that counts at t; t must not decrease from call to call.
  std::optional<std::size_t> advance(double t);

 private:
  const ZoomSegment* segment_ = nullptr;
  std::vector<std::size_t> byTime_;
  std::size_t begun_ = 0;  ///< how many of `byTime_` have begun
  std::priority_queue<std::size_t, std::vector<std::size_t>, std::greater<>> underWay_;
};

/// Walks the segments of a track in time: at each instant, the first segment in their order that
/// covers it, and the pan that it is on.
class SegmentSweep {
 public:
  struct Effect {
    const ZoomSegment* segment = nullptr;
    std::optional<std::size_t> waypoint;
  };

  /// @param segments sorted by start, none ending before it starts; must outlive the sweep.
  explicit SegmentSweep(std::span<const ZoomSegment> segments) : segments_(segments) {}

  /// What applies at t; t must not decrease from call to call.
  std::optional<Effect> advance(double t);

 private:
  std::span<const ZoomSegment> segments_;  ///< those not yet over
  const ZoomSegment* current_ = nullptr;
  WaypointSweep waypoints_;
};

}  // namespace vesk::motion
