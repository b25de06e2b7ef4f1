#include "editor/StageOverlay.h"

namespace vesk::editor {

StageOverlay::StageOverlay(PreviewController& preview, EditorUIState& ui, QObject* parent)
    : QObject{parent}, preview_{preview}, ui_{ui} {
  connect(&preview, &PreviewController::projectChanged, this, &StageOverlay::updateShown);
  connect(&ui, &EditorUIState::pipChanged, this, &StageOverlay::updateShown);
  connect(&ui, &EditorUIState::pipChanged, this, &StageOverlay::geometryChanged);
  updateShown();
}

void StageOverlay::setStageSize(QSizeF size) {
  const StageSize stage{.width = size.width(), .height = size.height()};
  if (stage == stage_) return;
  stage_ = stage;
  Q_EMIT geometryChanged();
}

QRectF StageOverlay::rect() const {
  const StageRect rect = gesture().rect();
  return {rect.x, rect.y, rect.width, rect.height};
}

QPointF StageOverlay::handle() const {
  const StagePoint handle = gesture().handle();
  return {handle.x, handle.y};
}

bool StageOverlay::isCircle() const {
  return ui_.pip().shape == package::PiPSettings::Shape::circle;
}

void StageOverlay::setHovering(bool value) {
  if (value == hovering_) return;
  hovering_ = value;
  Q_EMIT hoveringChanged();
}

void StageOverlay::setResizing(bool value) {
  if (value == resizing_) return;
  resizing_ = value;
  Q_EMIT resizingChanged();
}

void StageOverlay::move(double x, double y) {
  if (!isShown_) return;
  change(gesture().moved({.x = x, .y = y}));
}

void StageOverlay::resize(double x, double y) {
  if (!isShown_) return;
  setResizing(true);
  change(gesture().resized({.x = x, .y = y}));
}

void StageOverlay::endResize() {
  setResizing(false);
}

void StageOverlay::change(const package::PiPSettings& pip) {
  preview_.pushUndo(PreviewController::continuousEdit);
  ui_.setPip(pip);
}

void StageOverlay::updateShown() {
  const bool shown = preview_.hasProject() && preview_.hasCamera() && ui_.pip().enabled;
  if (shown == isShown_) return;
  isShown_ = shown;
  if (!shown) {
    setHovering(false);
    setResizing(false);
  }
  Q_EMIT isShownChanged();
}

}  // namespace vesk::editor
