#pragma once

#include <QtQml/qqml.h>

#include "editor/EditorKeys.h"
#include "editor/RoundedShape.h"
#include "editor/StageOverlay.h"

// The page's objects as types that QML can name; most are made by whoever starts the window.
namespace vesk::editor {

struct EditorKeysType {
  Q_GADGET
  QML_FOREIGN(vesk::editor::EditorKeys)
  QML_NAMED_ELEMENT(EditorKeys)
  QML_UNCREATABLE("made by the application")
};

struct RoundedShapeType {
  Q_GADGET
  QML_FOREIGN(vesk::editor::RoundedShape)
  QML_NAMED_ELEMENT(RoundedShape)
};

struct StageOverlayType {
  Q_GADGET
  QML_FOREIGN(vesk::editor::StageOverlay)
  QML_NAMED_ELEMENT(StageOverlay)
  QML_UNCREATABLE("made by the application")
};

}  // namespace vesk::editor
