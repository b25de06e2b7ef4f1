import QtQuick
import QtQuick.Layouts
import Vesk.Editor
import Vesk.Session
import Vesk.Theme
import Vesk.Timeline

/// The editor: the stage with its transport bar, the timeline below, the inspector at the right.
RowLayout {
    id: page

    required property PreviewController preview
    required property EditorView editor
    required property StageOverlay overlay
    required property TimelineView timeline

    objectName: "editorPage"
    spacing: 0

    ColumnLayout {
        Layout.fillWidth: true
        Layout.fillHeight: true
        spacing: 0

        Notice {
            objectName: "loadNotice"
            Layout.fillWidth: true
            visible: page.preview.hasProject && page.preview.loadError !== ""
            text: page.preview.loadError
        }
        PreviewStage {
            Layout.fillWidth: true
            Layout.fillHeight: true
            preview: page.preview
            overlay: page.overlay
        }
        TransportBar {
            Layout.fillWidth: true
            enabled: page.preview.hasProject
            preview: page.preview
            editor: page.editor
        }
        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Theme.border
        }
        Timeline {
            Layout.fillWidth: true
            view: page.timeline
            editor: page.editor
        }
    }

    Rectangle {
        Layout.fillHeight: true
        implicitWidth: 1
        color: Theme.border
    }
    InspectorPlace {
        Layout.fillHeight: true
        Layout.preferredWidth: 300
    }
}
