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
  if (isDragging_ || !std::isfinite(x)) return;
  gesture_ = DragState{
      .id = id.toStdString(), .mode = mode, .startX = x, .pxPerSec = viewport_.pxPerSec()};
}

bool TimelineView::startDrag(double x) {
  if (std::abs(x - gesture_->startX) < leastDistance(gesture_->mode)) return false;
  const motion::ZoomSegment* const segment = preview_.segment(gesture_->id);
  if (segment == nullptr) return false;
  isDragging_ = true;
  gesture_->origStart = segment->start;
  gesture_->origEnd = segment->end;
  ui_.setSelectedSegmentID(QString::fromStdString(gesture_->id));
  Q_EMIT dragChanged();
  return true;
}

void TimelineView::drag(const QString& id, double x, bool isFree) {
  if (!std::isfinite(x) || !gesture_ || gesture_->id != id.toStdString()) return;
  if (!isDragging_ && !startDrag(x)) return;
  viewport_.reveal(std::clamp(x, 0.0, viewport_.contentWidth()));
  std::vector<double> candidates;
  if (!isFree) {
    candidates = snapCandidates(preview_.currentTime(), snapMarks_, preview_.timeline().segments,
                                gesture_->id);
  }
  const DraggedTimes times =
      draggedTimes(*gesture_, x, {.duration = preview_.duration(), .snapCandidates = candidates});
  gesture_->snapped = times.snapped;
  showTrimmedEdge(times);
  preview_.setSegmentTimes(gesture_->id, times.start, times.end);
}

void TimelineView::showTrimmedEdge(const DraggedTimes& times) {
  if (gesture_->mode == Mode::trimL) {
    setHoverInfo(HoverInfo{times.start, "起点", viewport_.xOf(times.start)});
  } else if (gesture_->mode == Mode::trimR) {
    setHoverInfo(HoverInfo{times.end, "终点", viewport_.xOf(times.end)});
  }
}

void TimelineView::endDrag(const QString& id) {
  if (!gesture_ || gesture_->id != id.toStdString()) return;
  const bool wasDragging = isDragging_;
  dropDrag();
  if (wasDragging) preview_.rebuildTrack();
}

void TimelineView::dropDrag() {
  gesture_.reset();
  const bool wasDragging = std::exchange(isDragging_, false);
  setHoverInfo(std::nullopt);
  updateSegments();
  if (wasDragging) Q_EMIT dragChanged();
}

void TimelineView::rescaleDrag() {
  if (gesture_) gesture_ = rescaled(*std::move(gesture_), viewport_.pxPerSec());
  if (hoverInfo_) {
    setHoverInfo(HoverInfo{hoverInfo_->time, hoverInfo_->label, viewport_.xOf(hoverInfo_->time)});
  }
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
