import QtQuick
import Vesk.Session
import Vesk.Theme

/// What can be done from every page.
PopupMenu {
    id: menu

    required property PreviewController preview

    objectName: "appMenu"

    PopupMenuItem {
        objectName: "undoMenuItem"
        text: "撤销"
        keys: "⌘Z"
        enabled: menu.preview.canUndo
        onTriggered: menu.preview.undo()
    }
    PopupMenuItem {
        objectName: "redoMenuItem"
        text: "重做"
        keys: "⇧⌘Z"
        enabled: menu.preview.canRedo
        onTriggered: menu.preview.redo()
    }
    PopupMenuItem {
        objectName: "quitMenuItem"
        text: "退出"
        keys: "Ctrl+Q"
        onTriggered: Qt.quit()
    }
}
