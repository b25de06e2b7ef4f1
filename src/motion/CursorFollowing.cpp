#include "motion/CursorFollowing.h"

#include <algorithm>
#include <glm/common.hpp>
#include <glm/geometric.hpp>
#include <optional>
#include <string_view>

#include "motion/CameraTrack.h"
#include "motion/SegmentSweep.h"

namespace vesk::motion {
namespace {

/// Share of the viewport that always lies between the cursor and the viewport's edge.
constexpr float edgeMargin = 0.04F;

/// The camera centre that runs along with cursor and pans. It takes over from the keyframes when a
/// segment's hold begins.
class RunningCentre {
 public:
  RunningCentre(const CursorTrack& cursorTrack, CameraEase ease, bool perspective)
      : cursorTrack_(cursorTrack),
        ease_(ease),
        perspective_(perspective),
        follow_(cursorTrack.smoothed(0, 0.7, 0.12)) {}

  /// Between segments the keyframes alone lead.
  void rest() { wasSettled_ = false; }

  /// The target of one sample inside a segment.
  glm::vec2 target(const CameraPose& pose, double t, const SegmentSweep::Effect& effect);

 private:
  void pan(const ZoomSegment& segment, std::size_t index, double t);
  void chase(const ZoomSegment& segment, glm::vec2 cursor, float width);
  bool isOutsideDeadzone(const ZoomSegment& segment, glm::vec2 cursor, float width) const;
  glm::vec2 keptNear(glm::vec2 point, glm::vec2 cursor, float reach) const;
  glm::vec2 blended(glm::vec2 framed, float weight) const {
    return framed + (follow_ - framed) * weight;
  }

  /// Pans are told apart by the segment's id and the waypoint's place in it.
  struct Pan {
    std::string_view segmentId;
    std::size_t waypoint = 0;
    bool operator==(const Pan&) const = default;
  };

  const CursorTrack& cursorTrack_;
  CameraEase ease_;
  bool perspective_;
  glm::vec2 follow_;
  glm::vec2 panFrom_{0.5F, 0.5F};
  std::optional<Pan> pan_;
  bool wasSettled_ = false;
};

/// How far following has taken over from the keyframes: a quadratic ease over a quarter of a
/// second.
float takeover(double sinceHoldStart) {
  const double a = std::min(sinceHoldStart * 4, 1.0);
  const double rest = 2 - 2 * a;
  return static_cast<float>(a >= 0.5 ? 1 - rest * rest / 2 : 2 * a * a);
}

glm::vec2 RunningCentre::target(const CameraPose& pose, double t,
                                const SegmentSweep::Effect& effect) {
  const ZoomSegment& segment = *effect.segment;
  const double holdStart = segment.start + segment.easeIn;
  const bool settled = segment.followCursor && t >= holdStart;
  const bool inHold = settled && t <= std::max(segment.end - segment.easeOut, holdStart);
  const bool takesOver = settled && !wasSettled_;
  wasSettled_ = settled;

  if (effect.waypoint) {
    pan(segment, *effect.waypoint, t);
  }
  if (takesOver) {
    follow_ = pose.target;
  }
  if (effect.waypoint) {
    return blended(pose.target, 1);
  }
  if (!settled) {
    return pose.target;
  }
  const float weight = takeover(t - holdStart);
  if (!inHold) {
    return blended(pose.target, weight);
  }
  const glm::vec2 cursor = cursorTrack_.smoothed(t, 0.75, 0.14);
  const auto width = static_cast<float>(1 / std::max(pose.framing, 0.0001));
  chase(segment, cursor, width);
  return keptNear(blended(pose.target, weight), cursor,
                  2 * (1 - weight) + width / 2 - edgeMargin * width);
}

void RunningCentre::pan(const ZoomSegment& segment, std::size_t index, double t) {
  const Pan current{.segmentId = segment.id, .waypoint = index};
  if (pan_ != current) {
    pan_ = current;
    panFrom_ = follow_;
  }
  const ZoomSegment::Waypoint& waypoint = segment.waypoints[index];
  const double progress = std::clamp((t - waypoint.t) / segment.panDuration, 0.0, 1.0);
  follow_ = panFrom_ + (waypoint.focus - panFrom_) * static_cast<float>(value(ease_, progress));
}

/// Moves the centre towards a cursor that has left the dead zone: at the segment's speed while the
/// cursor is near, up to sixteen times that when it has run ahead. Whatever the speed, the cursor
/// stays inside the viewport.
void RunningCentre::chase(const ZoomSegment& segment, glm::vec2 cursor, float width) {
  constexpr float nothing = 0.00001F;
  const float half = width * 0.5F;
  const glm::vec2 way = cursor - follow_;
  const float distance = glm::length(way);
  if (isOutsideDeadzone(segment, cursor, width) && distance > nothing) {
    const float ahead = distance / std::max(half, nothing) - 0.5F;
    const double haste = ahead >= 3 ? 16.0 : 1 + 5 * std::max(ahead, 0.0F);
    const double length = std::min(haste * segment.followSpeed / 60, static_cast<double>(distance));
    const glm::vec2 moved = follow_ + way * (static_cast<float>(length) / distance);
    follow_ = perspective_ ? glm::vec2(follow_.x, moved.y) : moved;
  }
  follow_ = keptNear(follow_, cursor, half - edgeMargin * width);
}

bool RunningCentre::isOutsideDeadzone(const ZoomSegment& segment, glm::vec2 cursor,
                                      float width) const {
  const double dead = std::clamp(segment.deadzone, 0.05, 0.95);
  const double low = (1 - dead) * 0.5;
  const double high = 1 - low;
  const glm::vec2 inView = (cursor - (follow_ - width * 0.5F)) / width;
  const auto isOutside = [low, high](float place) { return place < low || place > high; };
  return isOutside(inView.y) || (!perspective_ && isOutside(inView.x));
}

glm::vec2 RunningCentre::keptNear(glm::vec2 point, glm::vec2 cursor, float reach) const {
  const glm::vec2 kept = glm::min(glm::max(point, cursor - reach), cursor + reach);
  return perspective_ ? glm::vec2(point.x, kept.y) : kept;
}

}  // namespace

std::vector<CameraPose> followCursor(std::vector<CameraPose> samples,
                                     std::span<const ZoomSegment> segments,
                                     const CursorTrack& cursorTrack, CameraEase ease,
                                     bool perspective) {
  SegmentSweep sweep(segments);
  RunningCentre centre(cursorTrack, ease, perspective);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double t = trackStep * static_cast<double>(i);
    if (const auto effect = sweep.advance(t)) {
      samples[i].target = centre.target(samples[i], t, *effect);
    } else {
      centre.rest();
    }
  }
  return samples;
}

}  // namespace vesk::motion
