#include "motion/SegmentSweep.h"

#include <algorithm>

namespace vesk::motion {

WaypointSweep::WaypointSweep(const ZoomSegment& segment) : segment_(&segment) {
  byTime_.reserve(segment.waypoints.size());
  for (std::size_t i = 0; i < segment.waypoints.size(); ++i) {
    byTime_.push_back(i);
  }
  std::ranges::sort(byTime_, {}, [&segment](std::size_t i) { return segment.waypoints[i].t; });
}

std::optional<std::size_t> WaypointSweep::advance(double t) {
  const auto startOf = [this](std::size_t i) { return segment_->waypoints[i].t; };
  while (begun_ < byTime_.size() && startOf(byTime_[begun_]) <= t) {
    underWay_.push(byTime_[begun_++]);
  }
  // Only the first listed matters, so one further back may stay until it comes to the top.
  while (!underWay_.empty() && t >= startOf(underWay_.top()) + segment_->panDuration) {
    underWay_.pop();
  }
  return underWay_.empty() ? std::nullopt : std::optional(underWay_.top());
}

std::optional<SegmentSweep::Effect> SegmentSweep::advance(double t) {
  // A segment that is over stays over. Those behind the first one that is not may be over too, but
  // they do not count as long as it covers t; and if it has not begun, none behind it has.
  while (!segments_.empty() && segments_.front().end < t) {
    segments_ = segments_.subspan(1);
  }
  if (segments_.empty() || t < segments_.front().start) {
    return std::nullopt;
  }
  const ZoomSegment& segment = segments_.front();
  if (current_ != &segment) {
    current_ = &segment;
    waypoints_ = WaypointSweep(segment);
  }
  return Effect{.segment = current_, .waypoint = waypoints_.advance(t)};
}

}  // namespace vesk::motion
