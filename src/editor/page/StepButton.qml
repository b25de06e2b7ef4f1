import QtQuick
import Vesk.Session
import Vesk.Theme

/// Steps by a picture, and by a second while Shift is held.
IconButton {
    id: button

    required property EditorView editor
    required property int direction

    onClicked: editor.stepFrames(direction)

    TapHandler {
        acceptedModifiers: Qt.ShiftModifier
        gesturePolicy: TapHandler.ReleaseWithinBounds
        onTapped: button.editor.stepSeconds(button.direction)
    }
}
