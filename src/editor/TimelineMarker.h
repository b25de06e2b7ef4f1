#pragma once

#include <cstddef>
#include <span>
#include <vector>

#include "editor/TimeRange.h"
#include "package/RecordingProject.h"

namespace vesk::editor {

/// A click or a manual mark of the recording, as it stands in the lane of marks.
struct TimelineMarker {
  enum class Kind { click, doubleClick, zoomIn, zoomOut };

  double time = 0;  ///< seconds
  Kind kind = Kind::click;

  bool isClick() const { return kind == Kind::click || kind == Kind::doubleClick; }
  bool operator==(const TimelineMarker&) const = default;
};

/// All markers of a recording, in the order of time.
std::vector<TimelineMarker> timelineMarkers(const package::RecordingProject& project);

/// The markers in a range: the first one and how many.
struct MarkerRun {
  std::size_t first = 0;
  std::size_t count = 0;
  bool operator==(const MarkerRun&) const = default;
};

/// @param markers in the order of time.
MarkerRun markersIn(std::span<const TimelineMarker> markers, TimeRange range);

}  // namespace vesk::editor
