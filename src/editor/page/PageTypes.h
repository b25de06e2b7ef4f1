#pragma once

#include <QtQml/qqml.h>

#include "editor/EditorKeys.h"
#include "editor/StageOverlay.h"

// The page's objects as types that QML can name; whoever starts the window makes them.
namespace vesk::editor {

struct EditorKeysType {
  Q_GADGET
  QML_FOREIGN(vesk::editor::EditorKeys)
  QML_NAMED_ELEMENT(EditorKeys)
  QML_UNCREATABLE("made by the application")
};

struct StageOverlayType {
  Q_GADGET
  QML_FOREIGN(vesk::editor::StageOverlay)
  QML_NAMED_ELEMENT(StageOverlay)
  QML_UNCREATABLE("made by the application")
};

}  // namespace vesk::editor
