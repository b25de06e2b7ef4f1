#include "app/window/ScriptedEdit.h"

namespace vesk::app {

void runScriptedEdit(editor::PreviewController& preview, editor::EditorUIState& ui) {
  package::PiPSettings pip = ui.pip();
  pip.center = {0.31F, 0.42F};
  pip.size = 0.37;
  ui.setPip(pip);
  preview.changeLook([](compositor::CompositeSettings& look) {
    look.cursorSettings.style = package::CursorStyle::crosshair;
    look.rippleSettings.size = 0.038;
    look.transitionEase = motion::CameraEase::cinema;
  });
  preview.setFollowSpeedRaw(0.88);
  preview.rebuildTrack();
  preview.rebuildTrack();
}

}  // namespace vesk::app
