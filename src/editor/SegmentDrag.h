#pragma once

#include <optional>
#include <span>
#include <string>

#include "motion/ZoomSegment.h"

namespace vesk::editor {

/// A gesture on a segment that is under way. Seconds; x in points from the start of the lanes, in
/// double precision because an hour at the largest scale is 720,000 of them wide.
struct DragState {
  enum class Mode { move, trimL, trimR };

  std::string id;
  Mode mode = Mode::move;
  double startX = 0;     ///< where the gesture began
  double pxPerSec = 24;  ///< the scale of the lanes
  double origStart = 0;  ///< the segment's start when it began
  double origEnd = 0;
  std::optional<double> snapped;  ///< the time last snapped to
  bool operator==(const DragState&) const = default;
};

/// How far the pointer must go before a gesture begins, in points.
double leastDistance(DragState::Mode mode);

/// The same gesture on lanes of another scale: it began at the same moment of the recording.
DragState rescaled(DragState drag, double pxPerSec);

/// What a drag happens on.
struct DragSurroundings {
  double duration = 0;                     ///< of the session, in seconds
  std::span<const double> snapCandidates;  ///< in order of preference; none for no snapping
};

struct DraggedTimes {
  double start = 0;
  double end = 0;
  std::optional<double> snapped;  ///< the candidate that drew the edge to it
  bool operator==(const DraggedTimes&) const = default;
};

/// Where a segment lies with the pointer at x, on lanes of the drag's scale. A move keeps its
/// length and snaps with its left edge; a trim keeps the other edge. Segments may come to overlap.
DraggedTimes draggedTimes(const DragState& drag, double x, const DragSurroundings& surroundings);

}  // namespace vesk::editor
