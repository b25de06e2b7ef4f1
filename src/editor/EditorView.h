#pragma once

#include <QObject>
#include <QString>

#include "editor/EditorUIState.h"
#include "editor/PreviewController.h"

namespace vesk::editor {

/// What the editor page does beyond showing: its transport and its keys, and that the camera's
/// window is the same for the page and for the renderer. Main thread.
class EditorView : public QObject {
  Q_OBJECT
  Q_PROPERTY(QString timeText READ timeText NOTIFY timeTextChanged)
  Q_PROPERTY(QString durationText READ durationText NOTIFY durationTextChanged)
  Q_PROPERTY(bool canDelete READ canDelete NOTIFY canDeleteChanged)

 public:
  /// Both outlive the view.
  EditorView(PreviewController& preview, EditorUIState& ui, QObject* parent = nullptr);

  /// The playhead in minutes, seconds and hundredths.
  QString timeText() const;
  QString durationText() const;

  /// Moves the playhead by pictures of the recording, and pauses.
  Q_INVOKABLE void stepFrames(int count);
  Q_INVOKABLE void stepSeconds(int count);
  /// Adds a segment around the playhead and selects it.
  Q_INVOKABLE void addSegmentAtPlayhead();
  /// Deletes the selected segment.
  Q_INVOKABLE void deleteSelectedSegment();
  /// Whether the selection is a segment of the timeline.
  bool canDelete() const;

 Q_SIGNALS:
  void timeTextChanged();
  void durationTextChanged();
  void canDeleteChanged();

 private:
  PreviewController& preview_;
  EditorUIState& ui_;
};

}  // namespace vesk::editor
