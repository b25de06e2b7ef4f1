#include "editor/SegmentEditing.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

namespace vesk::editor {
namespace {

using motion::ZoomSegment;

constexpr double newLength = 4.5;
constexpr double shareBeforeTime = 0.35;
constexpr double shortestNew = 1.0;
constexpr double pauseBeforeCopy = 0.1;

}  // namespace

std::optional<ZoomSegment> newSegment(std::span<const ZoomSegment> existing, double time,
                                      glm::vec2 focus, double duration) {
  if (!std::isfinite(time) || !std::isfinite(duration)) return std::nullopt;
  double start = std::max(time - newLength * shareBeforeTime, 0.0);
  const double end = std::min(start + newLength, duration);
  if (end - start < shortestNew) start = std::max(end - shortestNew, 0.0);
  const bool overlaps = std::ranges::any_of(
      existing, [&](const ZoomSegment& other) { return other.start < end && other.end > start; });
  // In a recording without length there is no room.
  if (overlaps || !(start < end)) return std::nullopt;
  ZoomSegment segment;
  // Adding 0 takes the sign off a zero.
  segment.id = fmt::format("user_{:.0f}", std::trunc(time * 1000) + 0.0);
  segment.start = start;
  segment.end = end;
  segment.focus = focus;
  segment.isManual = true;
  return segment;
}

std::optional<ZoomSegment> duplicateOf(const ZoomSegment& segment, double duration,
                                       std::int64_t milliseconds) {
  ZoomSegment copy = segment;
  copy.id = fmt::format("dup_{}", milliseconds);
  copy.start = segment.end + pauseBeforeCopy;
  copy.end = copy.start + (segment.end - segment.start);
  copy.isManual = true;
  copy.endsWithExplicitReset = false;
  copy.sourceClickTime.reset();
  copy.waypoints.clear();
  if (!(copy.end <= duration)) return std::nullopt;
  return copy;
}

const ZoomSegment* segmentAt(std::span<const ZoomSegment> segments, double time) {
  const auto found = std::ranges::find_if(segments, [&](const ZoomSegment& segment) {
    return segment.start <= time && time <= segment.end;
  });
  return found == segments.end() ? nullptr : &*found;
}

}  // namespace vesk::editor
