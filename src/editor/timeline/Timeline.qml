import QtQuick
import QtQuick.Layouts
import Vesk.Session
import Vesk.Theme
import Vesk.Timeline

/// The timeline below the preview: its header, the heads of the lanes at the left, and the lanes,
/// which scroll beside them.
FocusScope {
    id: timeline

    required property TimelineView view
    required property EditorView editor

    objectName: "timeline"
    implicitHeight: column.implicitHeight

    Rectangle {
        anchors.fill: parent
        color: Theme.background
    }
    ColumnLayout {
        id: column
        anchors.fill: parent
        spacing: 0

        TimelineHeader {
            Layout.fillWidth: true
            view: timeline.view
            editor: timeline.editor
        }
        RowLayout {
            spacing: 0
            LaneHeads {
                Layout.alignment: Qt.AlignTop
                // Beside the first moment there is room for what stands on it.
                Layout.preferredWidth: TimelineLayout.headWidth - lanes.gutter
            }
            Lanes {
                id: lanes
                Layout.fillWidth: true
                view: timeline.view
            }
        }
        LanesScrollBar {
            Layout.fillWidth: true
            Layout.leftMargin: TimelineLayout.headWidth
            Layout.rightMargin: lanes.gutter
            viewport: timeline.view.viewport
        }
        Item {
            Layout.fillHeight: true
        }
    }
}
