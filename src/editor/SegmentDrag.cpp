#include "editor/SegmentDrag.h"

#include <algorithm>

#include "editor/TimelineScale.h"
#include "editor/TimelineSnap.h"

namespace vesk::editor {
namespace {

using Mode = DragState::Mode;

/// Where the edge that the pointer holds would lie if nothing held it back.
double heldEdge(const DragState& drag, double x, double duration) {
  const double delta = (x - drag.startX) / drag.pxPerSec;
  if (drag.mode == Mode::trimR) return std::min(drag.origEnd + delta, duration);
  return std::max(drag.origStart + delta, 0.0);
}

DraggedTimes moved(const DragState& drag, double start, double duration) {
  const double length = drag.origEnd - drag.origStart;
  const double kept = std::min(start, std::max(duration - length, 0.0));
  return {.start = kept, .end = kept + length};
}

DraggedTimes placed(const DragState& drag, double edge, double duration) {
  if (drag.mode == Mode::move) return moved(drag, edge, duration);
  const double least = leastLength(drag.pxPerSec);
  if (drag.mode == Mode::trimL) {
    return {.start = std::min(drag.origEnd - least, edge), .end = drag.origEnd};
  }
  return {.start = drag.origStart, .end = std::max(edge, drag.origStart + least)};
}

}  // namespace

double leastDistance(Mode mode) {
  return mode == Mode::move ? 3 : 1;
}

DragState rescaled(DragState drag, double pxPerSec) {
  drag.startX *= pxPerSec / drag.pxPerSec;
  drag.pxPerSec = pxPerSec;
  return drag;
}

DraggedTimes draggedTimes(const DragState& drag, double x, const DragSurroundings& surroundings) {
  const double edge = heldEdge(drag, x, surroundings.duration);
  const auto snapped = snap(edge, snapDistance(drag.pxPerSec), surroundings.snapCandidates);
  DraggedTimes times = placed(drag, snapped.value_or(edge), surroundings.duration);
  times.snapped = snapped;
  return times;
}

}  // namespace vesk::editor
