#include "editor/TimelineMarker.h"

#include <algorithm>
#include <cmath>
#include <optional>

namespace vesk::editor {
namespace {

using package::RecordedEvent;
using Kind = TimelineMarker::Kind;

std::optional<Kind> markerKind(const RecordedEvent& event) {
  switch (event.type) {
    case RecordedEvent::Kind::click:
      return event.clickCount.value_or(1) > 1 ? Kind::doubleClick : Kind::click;
    case RecordedEvent::Kind::zoomIn:
      return Kind::zoomIn;
    case RecordedEvent::Kind::zoomOut:
      return Kind::zoomOut;
    default:
      return std::nullopt;
  }
}

}  // namespace

std::vector<TimelineMarker> timelineMarkers(const package::RecordingProject& project) {
  std::vector<TimelineMarker> markers;
  for (const RecordedEvent& event : project.events) {
    const auto kind = markerKind(event);
    if (kind && std::isfinite(event.t)) markers.push_back({.time = event.t, .kind = *kind});
  }
  return markers;
}

MarkerRun markersIn(std::span<const TimelineMarker> markers, TimeRange range) {
  if (!(range.from <= range.to)) return {};
  const auto begin = std::ranges::lower_bound(markers, range.from, {}, &TimelineMarker::time);
  const auto end =
      std::ranges::upper_bound(begin, markers.end(), range.to, {}, &TimelineMarker::time);
  return {.first = static_cast<std::size_t>(begin - markers.begin()),
          .count = static_cast<std::size_t>(end - begin)};
}

}  // namespace vesk::editor
