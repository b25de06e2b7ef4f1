import QtQuick
import Vesk.Session
import Vesk.Theme
import Vesk.Timeline

/// The selected segment's length and level, and what can be done with it.
Row {
    id: actions

    required property TimelineView view
    required property EditorView editor

    spacing: Theme.spaceSmall

    Text {
        objectName: "selectionText"
        anchors.verticalCenter: parent.verticalCenter
        text: actions.view.selectionText
        color: Theme.t2
        font { family: Theme.numberFamily; pixelSize: Theme.fontBody }
    }
    PushButton {
        objectName: "toggleSelectedButton"
        text: actions.view.selectionToggleText
        onClicked: actions.view.toggleSegmentEnabled(actions.view.selectedSegmentID)
    }
    PushButton {
        objectName: "deleteSelectedButton"
        text: "删除"
        onClicked: actions.editor.deleteSelectedSegment()
    }
}
