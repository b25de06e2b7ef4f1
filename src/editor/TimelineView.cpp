#include "editor/TimelineView.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

#include "editor/SegmentEditing.h"
#include "editor/TimeText.h"
#include "editor/TimelineScale.h"

namespace vesk::editor {

using motion::ZoomSegment;

TimelineView::TimelineView(PreviewController& preview, EditorUIState& ui, QObject* parent)
    : QObject(parent), preview_(preview), ui_(ui), viewport_(ui) {
  connect(&preview_, &PreviewController::projectChanged, this, &TimelineView::takeProject);
  connect(&preview_, &PreviewController::timelineChanged, this, &TimelineView::takeTimeline);
  connect(&preview_, &PreviewController::currentTimeChanged, this, &TimelineView::followPlayhead);
  connect(&ui_, &EditorUIState::selectedSegmentIDChanged, this, &TimelineView::selectionChanged);
  connect(&viewport_, &TimelineViewport::scaleChanged, this, &TimelineView::takeScale);
  connect(&viewport_, &TimelineViewport::rangeChanged, this, &TimelineView::updateRows);
  takeProject();
}

void TimelineView::takeProject() {
  dropDrag();
  setCurrentMarker(-1);
  const auto project = preview_.project();
  allMarkers_ = project ? timelineMarkers(*project) : std::vector<TimelineMarker>();
  snapMarks_ = project ? SnapMarks(*project) : SnapMarks();
  viewport_.setDuration(preview_.duration());
  viewport_.setContentX(0);
  updateRows();
  Q_EMIT projectChanged();
}

void TimelineView::takeTimeline() {
  // Its block goes with a segment and tells of no end.
  if (gesture_ && preview_.segment(gesture_->id) == nullptr) dropDrag();
  updateMarkers();
  updateSegments();
  Q_EMIT hasManualEditsChanged();
  Q_EMIT selectionChanged();
}

void TimelineView::takeScale() {
  rescaleDrag();
  Q_EMIT playheadChanged();
}

void TimelineView::updateRows() {
  ticks_.setRows(ticksIn(viewport_.range(), viewport_.duration(), viewport_.pxPerSec()));
  updateMarkers();
  updateSegments();
  playheadWasSeen_ = viewport_.isSeen(playheadX());
}

void TimelineView::updateMarkers() {
  const auto& segments = preview_.timeline().segments;
  const MarkerRun seen = markersIn(allMarkers_, viewport_.range());
  std::vector<MarkerRow> rows;
  rows.reserve(seen.count);
  for (std::size_t i = seen.first; i < seen.first + seen.count; ++i) {
    const TimelineMarker& marker = allMarkers_[i];
    rows.push_back(
        {.number = i, .marker = marker, .isAttached = segmentAt(segments, marker.time) != nullptr});
  }
  markers_.setRows(std::move(rows));
}

void TimelineView::updateSegments() {
  segments_.setRows(segmentsIn(preview_.timeline().segments, viewport_.range(),
                               gesture_ ? gesture_->id : std::string()));
}

// The playhead and the scale.

QString TimelineView::playheadText() const {
  return QString::fromStdString(editor::playheadText(preview_.currentTime()));
}

void TimelineView::followPlayhead() {
  // A playhead that was out of view is left alone: the user looks at something else. Nor is a
  // segment drawn away from under the pointer.
  const double x = playheadX();
  const bool leaves = playheadWasSeen_ && !viewport_.isSeen(x);
  if (leaves && !gesture_) viewport_.turnPage(x);
  playheadWasSeen_ = viewport_.isSeen(x);
  Q_EMIT playheadChanged();
}

void TimelineView::scrub(double x) {
  if (!std::isfinite(x)) return;
  viewport_.reveal(std::clamp(x, 0.0, viewport_.contentWidth()));
  preview_.seek(viewport_.timeAt(x));
}

double TimelineView::zoomCentre() const {
  const double x = playheadX();
  return viewport_.isSeen(x) ? x : viewport_.contentX() + viewport_.width() / 2;
}

void TimelineView::zoomIn() {
  viewport_.setScale(zoomedIn(viewport_.pxPerSec()), zoomCentre());
}

void TimelineView::zoomOut() {
  viewport_.setScale(zoomedOut(viewport_.pxPerSec()), zoomCentre());
}

void TimelineView::fit() {
  viewport_.setScale(fittedScale(preview_.duration(), viewport_.pxPerSec()), zoomCentre());
}

// The markers.

void TimelineView::seekToMarker(double time) {
  preview_.seek(time);
}

void TimelineView::toggleEffect(double time) {
  selectAdded(preview_.toggleEffect(time));
}

const TimelineMarker* TimelineView::marker() const {
  if (currentMarker_ < 0) return nullptr;
  return &allMarkers_[static_cast<std::size_t>(currentMarker_)];
}

void TimelineView::setCurrentMarker(qlonglong number) {
  if (number == currentMarker_) return;
  currentMarker_ = number;
  Q_EMIT currentMarkerChanged();
}

void TimelineView::stepMarker(int count) {
  if (allMarkers_.empty()) return;
  const auto atPlayhead =
      std::ranges::lower_bound(allMarkers_, preview_.currentTime(), {}, &TimelineMarker::time);
  const qlonglong next =
      currentMarker_ < 0 ? atPlayhead - allMarkers_.begin() : currentMarker_ + count;
  setCurrentMarker(std::clamp<qlonglong>(next, 0, static_cast<qlonglong>(allMarkers_.size()) - 1));
  viewport_.reveal(viewport_.xOf(marker()->time));
}

void TimelineView::seekToCurrentMarker() {
  if (marker() != nullptr) seekToMarker(marker()->time);
}

void TimelineView::toggleCurrentMarker() {
  if (marker() != nullptr && marker()->isClick()) toggleEffect(marker()->time);
}

// The segments.

const ZoomSegment* TimelineView::selection() const {
  return preview_.segment(ui_.selectedSegmentID().toStdString());
}

QString TimelineView::selectionText() const {
  const ZoomSegment* const segment = selection();
  if (segment == nullptr) return {};
  return QString::fromStdString(
      fmt::format("{:.2f}s · {:.1f}×", segment->end - segment->start, segment->level));
}

QString TimelineView::selectionToggleText() const {
  const ZoomSegment* const segment = selection();
  return segment != nullptr && !segment->enabled ? QStringLiteral("启用") : QStringLiteral("停用");
}

void TimelineView::select(const QString& id) {
  ui_.setSelectedSegmentID(id);
}

void TimelineView::stepSelection(int count) {
  std::vector<const ZoomSegment*> byStart;
  for (const ZoomSegment& segment : preview_.timeline().segments) byStart.push_back(&segment);
  if (byStart.empty()) return;
  std::ranges::stable_sort(byStart, {}, &ZoomSegment::start);
  const auto selected = std::ranges::find(byStart, selection());
  // They may overlap, so that their ends stand in any order.
  const auto atPlayhead = std::ranges::find_if(
      byStart, [now = preview_.currentTime()](auto* segment) { return segment->end >= now; });
  const std::ptrdiff_t next =
      selected == byStart.end() ? atPlayhead - byStart.begin() : selected - byStart.begin() + count;
  const ZoomSegment& segment =
      *byStart[std::clamp<std::ptrdiff_t>(next, 0, std::ssize(byStart) - 1)];
  select(QString::fromStdString(segment.id));
  viewport_.reveal(viewport_.xOf(segment.end));
  viewport_.reveal(viewport_.xOf(segment.start));
}

void TimelineView::selectAdded(const std::optional<std::string>& id) {
  if (id) select(QString::fromStdString(*id));
}

void TimelineView::addSegmentAt(double x) {
  if (std::isfinite(x)) selectAdded(preview_.addSegment(viewport_.timeAt(x)));
}

void TimelineView::toggleSegmentEnabled(const QString& id) {
  preview_.toggleSegmentEnabled(id.toStdString());
}

void TimelineView::duplicateSegment(const QString& id) {
  selectAdded(preview_.duplicateSegment(id.toStdString()));
}

void TimelineView::deleteSegment(const QString& id) {
  preview_.deleteSegment(id.toStdString());
}

}  // namespace vesk::editor
