#pragma once

#include "editor/EditorUIState.h"
#include "editor/PreviewController.h"

namespace vesk::app {

/// Changes everything at once that a live preview follows: the camera's window, the cursor, the
/// ripples, the transitions and how fast the camera follows.
void runScriptedEdit(editor::PreviewController& preview, editor::EditorUIState& ui);

}  // namespace vesk::app
