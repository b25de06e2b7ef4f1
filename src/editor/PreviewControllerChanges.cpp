// The changes that the user makes, each with all that it entails: the step to undo, the inference,
// the camera's path, the save.
#include <fmt/format.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <utility>

#include "editor/PreviewController.h"
#include "editor/SegmentEditing.h"

namespace vesk::editor {
namespace {

using motion::ZoomSegment;

// The cursor is looked up as the picture shows it.
constexpr double focusStrength = 0.7;
constexpr double focusWindow = 0.12;

}  // namespace

void PreviewController::setSensitivityRaw(motion::Sensitivity value) {
  sensitivityRaw_ = value;
}

void PreviewController::setUseAutoDetectionRaw(bool value) {
  useAutoDetectionRaw_ = value;
}

void PreviewController::setFollowSpeedRaw(double value) {
  followSpeedRaw_ = value;
}

void PreviewController::changeUseAutoDetection(bool value) {
  pushUndo(discreteEdit);
  setUseAutoDetectionRaw(value);
  regenerate();
  scheduleSave();
}

void PreviewController::changeSensitivity(motion::Sensitivity value) {
  pushUndo(discreteEdit);
  setSensitivityRaw(value);
  regenerate();
  scheduleSave();
}

void PreviewController::changeFollowSpeed(double value) {
  setFollowSpeedRaw(value);
  rebuildTrack();
}

void PreviewController::changeTransitionEase(motion::CameraEase value) {
  changeLook([&](compositor::CompositeSettings& look) { look.transitionEase = value; });
  rebuildTrack();
}

void PreviewController::changeCamera3D(const package::Camera3DSettings& preset) {
  changeLook([&](compositor::CompositeSettings& look) { look.camera3D = preset; });
  rebuildTrack();
}

void PreviewController::resetToAutomatic() {
  // Nothing of the user's is lost where nothing was edited by hand.
  if (hasManualEdits_) pushUndo(discreteEdit);
  regenerate();
}

QString PreviewController::resetQuestion() const {
  return QString::fromStdString(
      fmt::format("时间轴上的 {} "
                  "段将按算法重新推断，你调过的起止点、强度、焦点都会丢失。重置后可以用撤销退回。",
                  timeline_.segments.size()));
}

void PreviewController::changeVolumes(double system, double mic) {
  pushUndo(continuousEdit);
  changeLook([&](compositor::CompositeSettings& look) {
    look.systemVolume = system;
    look.micVolume = mic;
  });
  applyVolumes();
  scheduleSave();
}

ZoomSegment* PreviewController::editableSegment(const std::string& id) {
  const ZoomSegment* const found = segment(id);
  return found == nullptr ? nullptr : &timeline_.segments[found - timeline_.segments.data()];
}

void PreviewController::finishSegmentEdit() {
  hasManualEdits_ = true;
  rebuildTrack();
}

void PreviewController::changeSegment(const std::string& id,
                                      const std::function<void(ZoomSegment&)>& change) {
  ZoomSegment* const segment = editableSegment(id);
  if (segment == nullptr) return;
  pushUndo(continuousEdit);
  change(*segment);
  finishSegmentEdit();
}

void PreviewController::setSegmentTimes(const std::string& id, double start, double end) {
  ZoomSegment* const segment = editableSegment(id);
  if (segment == nullptr || !std::isfinite(start) || !std::isfinite(end)) return;
  pushUndo(continuousEdit);
  segment->start = start;
  segment->end = end;
  hasManualEdits_ = true;
  Q_EMIT timelineChanged();
}

std::optional<std::string> PreviewController::addSegment(double time) {
  if (!project_) return std::nullopt;
  const glm::vec2 focus = cursorTrack_ ? cursorTrack_->smoothed(time, focusStrength, focusWindow)
                                       : glm::vec2{0.5F, 0.5F};
  auto added = newSegment(timeline_.segments, time, focus, duration_);
  if (!added) return std::nullopt;
  pushUndo(discreteEdit);
  std::string id = added->id;
  timeline_.segments.push_back(*std::move(added));
  finishSegmentEdit();
  return id;
}

std::optional<std::string> PreviewController::duplicateSegment(const std::string& id) {
  const ZoomSegment* const original = segment(id);
  if (original == nullptr) return std::nullopt;
  const auto now = surroundings_.wallClock().time_since_epoch();
  auto copy = duplicateOf(*original, duration_,
                          std::chrono::duration_cast<std::chrono::milliseconds>(now).count());
  if (!copy) return std::nullopt;
  pushUndo(discreteEdit);
  std::string copyID = copy->id;
  timeline_.segments.push_back(*std::move(copy));
  finishSegmentEdit();
  return copyID;
}

void PreviewController::deleteSegment(const std::string& id) {
  if (segment(id) == nullptr) return;
  const QString deleted = QString::fromStdString(id);
  pushUndo(discreteEdit);
  // The caller's id may be that of the segment itself.
  std::erase_if(timeline_.segments,
                [key = id](const ZoomSegment& segment) { return segment.id == key; });
  finishSegmentEdit();
  Q_EMIT segmentDeleted(deleted);
}

void PreviewController::toggleSegmentEnabled(const std::string& id) {
  ZoomSegment* const segment = editableSegment(id);
  if (segment == nullptr) return;
  pushUndo(discreteEdit);
  segment->enabled = !segment->enabled;
  finishSegmentEdit();
}

std::optional<std::string> PreviewController::toggleEffect(double clickTime) {
  const ZoomSegment* const covering = segmentAt(timeline_.segments, clickTime);
  if (covering == nullptr) return addSegment(clickTime);
  deleteSegment(covering->id);
  return std::nullopt;
}

}  // namespace vesk::editor
