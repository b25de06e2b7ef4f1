// The gestures on the segments of the timeline.
#include <algorithm>
#include <cmath>
#include <utility>

#include "editor/TimeText.h"
#include "editor/TimelineView.h"

namespace vesk::editor {

using Mode = DragState::Mode;

void TimelineView::beginMove(const QString& id, double x) {
  beginDrag(id, Mode::move, x);
}

void TimelineView::beginTrimL(const QString& id, double x) {
  beginDrag(id, Mode::trimL, x);
}

void TimelineView::beginTrimR(const QString& id, double x) {
  beginDrag(id, Mode::trimR, x);
}

void TimelineView::beginDrag(const QString& id, Mode mode, double x) {
  if (drag_ || !std::isfinite(x)) return;
  press_ = DragState{.id = id.toStdString(), .mode = mode, .startX = x};
}

bool TimelineView::startDrag(const std::string& id, double x) {
  if (!press_ || press_->id != id) return false;
  if (std::abs(x - press_->startX) < leastDistance(press_->mode)) return false;
  const motion::ZoomSegment* const segment = preview_.segment(id);
  if (segment == nullptr) return false;
  drag_ = std::exchange(press_, std::nullopt);
  drag_->origStart = segment->start;
  drag_->origEnd = segment->end;
  ui_.setSelectedSegmentID(QString::fromStdString(id));
  Q_EMIT dragChanged();
  return true;
}

void TimelineView::drag(const QString& id, double x, bool isFree) {
  const std::string dragged = id.toStdString();
  if (!std::isfinite(x) || (!drag_ && !startDrag(dragged, x)) || drag_->id != dragged) return;
  viewport_.reveal(std::clamp(x, 0.0, viewport_.contentWidth()));
  std::vector<double> candidates;
  if (!isFree) {
    candidates =
        snapCandidates(preview_.currentTime(), snapMarks_, preview_.timeline().segments, dragged);
  }
  const DraggedTimes times = draggedTimes(*drag_, x,
                                          {.pxPerSec = viewport_.pxPerSec(),
                                           .duration = preview_.duration(),
                                           .snapCandidates = candidates});
  drag_->snapped = times.snapped;
  preview_.setSegmentTimes(dragged, times.start, times.end);
  if (drag_->mode == Mode::trimL) {
    setHoverInfo(HoverInfo{times.start, "起点", viewport_.xOf(times.start)});
  } else if (drag_->mode == Mode::trimR) {
    setHoverInfo(HoverInfo{times.end, "终点", viewport_.xOf(times.end)});
  }
}

void TimelineView::endDrag(const QString& id) {
  const std::string ended = id.toStdString();
  if (press_ && press_->id == ended) press_.reset();
  if (!drag_ || drag_->id != ended) return;
  dropDrag();
  preview_.rebuildTrack();
}

void TimelineView::dropDrag() {
  press_.reset();
  setHoverInfo(std::nullopt);
  if (!drag_) return;
  drag_.reset();
  Q_EMIT dragChanged();
}

void TimelineView::setHoverInfo(std::optional<HoverInfo> info) {
  if (info == hoverInfo_) return;
  hoverInfo_ = std::move(info);
  Q_EMIT hoverInfoChanged();
}

QString TimelineView::hoverText() const {
  if (!hoverInfo_) return {};
  return QString::fromStdString(hoverInfo_->label + ' ' + editor::playheadText(hoverInfo_->time));
}

}  // namespace vesk::editor
