import QtQuick
import QtQuick.Templates as T
import Vesk.App
import Vesk.Editor
import Vesk.Session
import Vesk.Theme
import Vesk.Timeline

/// The one window of the application. A menu that closes gives the keyboard back to what had it,
/// which a plain window would not see to.
T.ApplicationWindow {
    id: window

    required property RootView root
    required property PreviewController preview
    required property EditorView editor
    required property EditorKeys keys
    required property StageOverlay overlay
    required property TimelineView timeline

    objectName: "main"
    title: "Vesk"
    width: 1060
    height: 720
    minimumWidth: 860
    minimumHeight: 640
    color: Theme.background

    RootPage {
        anchors.fill: parent
        focus: true
        root: window.root
        preview: window.preview
        editor: window.editor
        keys: window.keys
        overlay: window.overlay
        timeline: window.timeline
    }

    Shortcut {
        sequences: ["Ctrl+Z", "Meta+Z"]
        enabled: window.preview.canUndo
        onActivated: window.preview.undo()
    }
    Shortcut {
        sequences: ["Ctrl+Shift+Z", "Meta+Shift+Z", "Ctrl+Y"]
        enabled: window.preview.canRedo
        onActivated: window.preview.redo()
    }
    Shortcut {
        sequence: "Ctrl+Q"
        onActivated: Qt.quit()
    }
}
