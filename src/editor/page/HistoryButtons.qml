import QtQuick
import Vesk.Session
import Vesk.Theme

/// One step back and one forward.
Row {
    id: buttons

    required property PreviewController preview

    spacing: Theme.spaceTiny

    IconButton {
        objectName: "undoButton"
        iconName: "undo"
        tip: "撤销 ⌘Z"
        enabled: buttons.preview.canUndo
        onClicked: buttons.preview.undo()
    }
    IconButton {
        objectName: "redoButton"
        iconName: "redo"
        tip: "重做 ⇧⌘Z"
        enabled: buttons.preview.canRedo
        onClicked: buttons.preview.redo()
    }
}
