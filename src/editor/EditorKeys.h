#pragma once

#include <QObject>

#include "editor/EditorView.h"
#include "editor/PreviewController.h"

namespace vesk::editor {

/// The keys of the editor page: the space bar plays and pauses, the arrows step by a picture or,
/// with Shift, by a second, M adds a segment, Delete and Backspace delete the selected one. They
/// come here last, when nothing that has the keyboard wants them. Main thread.
class EditorKeys : public QObject {
  Q_OBJECT

 public:
  /// Both outlive the keys.
  EditorKeys(PreviewController& preview, EditorView& editor, QObject* parent = nullptr);

  /// @param key a Qt::Key; @param modifiers Qt::KeyboardModifiers.
  /// @param repeated the key is held down: it steps on, and does nothing else again.
  /// @return whether the key does something here.
  Q_INVOKABLE bool press(int key, int modifiers, bool repeated);

 private:
  bool step(int direction, Qt::KeyboardModifiers modifiers);

  PreviewController& preview_;
  EditorView& editor_;
};

}  // namespace vesk::editor
