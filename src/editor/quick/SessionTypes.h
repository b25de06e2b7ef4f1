#pragma once

#include <QtQml/qqmlregistration.h>

#include "editor/EditorUIState.h"
#include "editor/EditorView.h"
#include "editor/PreviewController.h"

// The session's objects as types that QML can name; whoever starts the window makes them.
namespace vesk::editor {

struct PreviewControllerType {
  Q_GADGET
  QML_FOREIGN(vesk::editor::PreviewController)
  QML_NAMED_ELEMENT(PreviewController)
  QML_UNCREATABLE("made by the application")
};

struct EditorUIStateType {
  Q_GADGET
  QML_FOREIGN(vesk::editor::EditorUIState)
  QML_NAMED_ELEMENT(EditorUIState)
  QML_UNCREATABLE("made by the application")
};

struct EditorViewType {
  Q_GADGET
  QML_FOREIGN(vesk::editor::EditorView)
  QML_NAMED_ELEMENT(EditorView)
  QML_UNCREATABLE("made by the application")
};

}  // namespace vesk::editor
