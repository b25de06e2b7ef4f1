#include "editor/EditorView.h"

#include "editor/TimeText.h"

namespace vesk::editor {

EditorView::EditorView(PreviewController& preview, EditorUIState& ui, QObject* parent)
    : QObject(parent), preview_(preview), ui_(ui) {
  connect(&preview_, &PreviewController::currentTimeChanged, this, &EditorView::timeTextChanged);
  connect(&preview_, &PreviewController::projectChanged, this, &EditorView::durationTextChanged);
  connect(&preview_, &PreviewController::timelineChanged, this, &EditorView::canDeleteChanged);
  connect(&ui_, &EditorUIState::selectedSegmentIDChanged, this, &EditorView::canDeleteChanged);
  connect(&preview_, &PreviewController::segmentDeleted, this, [this](const QString& id) {
    if (ui_.selectedSegmentID() == id) ui_.setSelectedSegmentID({});
  });
  // The page's copy of the camera's window exists so that a drag need not go through the renderer.
  // After a document was applied the renderer's value holds; without taking it over, the next drag
  // would write the stale one back.
  connect(&preview_, &PreviewController::documentVersionChanged, this,
          [this] { ui_.setPip(preview_.look().pip); });
  connect(&ui_, &EditorUIState::pipChanged, this, [this] {
    if (ui_.pip() == preview_.look().pip) return;
    preview_.changeLook([this](compositor::CompositeSettings& look) { look.pip = ui_.pip(); });
    preview_.scheduleSave();
  });
}

QString EditorView::timeText() const {
  return QString::fromStdString(transportText(preview_.currentTime()));
}

QString EditorView::durationText() const {
  return QString::fromStdString(transportText(preview_.duration()));
}

void EditorView::stepFrames(int count) {
  if (!preview_.hasProject()) return;
  preview_.pause();
  preview_.seek(preview_.currentTime() + count / static_cast<double>(preview_.project()->meta.fps));
}

void EditorView::stepSeconds(int count) {
  preview_.pause();
  preview_.seek(preview_.currentTime() + count);
}

void EditorView::addSegmentAtPlayhead() {
  if (const auto id = preview_.addSegment(preview_.currentTime())) {
    ui_.setSelectedSegmentID(QString::fromStdString(*id));
  }
}

void EditorView::deleteSelectedSegment() {
  preview_.deleteSegment(ui_.selectedSegmentID().toStdString());
}

bool EditorView::canDelete() const {
  return preview_.segment(ui_.selectedSegmentID().toStdString()) != nullptr;
}

}  // namespace vesk::editor
