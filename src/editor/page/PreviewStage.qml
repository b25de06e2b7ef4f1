import QtQuick
import Vesk.Editor
import Vesk.Session
import Vesk.Theme

/// The surface on which the preview lies, as large as its form allows, or what stands there
/// without a recording.
Rectangle {
    id: stage

    required property PreviewController preview
    required property StageOverlay overlay
    readonly property real margin: 20
    readonly property real fittedWidth: Math.max(0, Math.min(width - 2 * margin, (height - 2 * margin) * preview.aspectRatio))

    objectName: "stageSurface"
    color: Theme.stage

    PreviewView {
        id: view
        objectName: "previewStage"
        anchors.centerIn: parent
        width: Math.round(stage.fittedWidth)
        height: Math.round(stage.fittedWidth / stage.preview.aspectRatio)
        visible: stage.preview.hasProject
        controller: stage.preview
        Accessible.role: Accessible.Graphic
        Accessible.name: "预览画面"

        PipOverlay {
            anchors.fill: parent
            overlay: stage.overlay
        }
    }
    EmptyStage {
        anchors.centerIn: parent
        width: parent.width - 2 * stage.margin
        visible: !stage.preview.hasProject
        preview: stage.preview
    }
}
