#include "editor/EditorKeys.h"

namespace vesk::editor {

EditorKeys::EditorKeys(PreviewController& preview, EditorView& editor, QObject* parent)
    : QObject(parent), preview_(preview), editor_(editor) {}

bool EditorKeys::press(int key, int modifiers, bool repeated) {
  if (!preview_.hasProject()) return false;
  // Where the key lies, on the number pad for one, does not matter.
  const Qt::KeyboardModifiers held =
      Qt::KeyboardModifiers(modifiers) &
      (Qt::ShiftModifier | Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier);
  if (key == Qt::Key_Left) return step(-1, held);
  if (key == Qt::Key_Right) return step(1, held);
  if (held != Qt::NoModifier) return false;
  switch (key) {
    case Qt::Key_Space:
      if (!repeated) preview_.togglePlaying();
      return true;
    case Qt::Key_M:
      if (!repeated) editor_.addSegmentAtPlayhead();
      return true;
    case Qt::Key_Delete:
    case Qt::Key_Backspace:
      if (!editor_.canDelete()) return false;
      if (!repeated) editor_.deleteSelectedSegment();
      return true;
    default:
      return false;
  }
}

bool EditorKeys::step(int direction, Qt::KeyboardModifiers modifiers) {
  if (modifiers == Qt::NoModifier) {
    editor_.stepFrames(direction);
    return true;
  }
  if (modifiers == Qt::ShiftModifier) {
    editor_.stepSeconds(direction);
    return true;
  }
  return false;
}

}  // namespace vesk::editor
