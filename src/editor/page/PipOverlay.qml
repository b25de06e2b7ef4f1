import QtQuick
import Vesk.Editor
import Vesk.Theme

/// Lets the camera's window be moved and resized on the stage that it covers.
Item {
    id: stage

    required property StageOverlay overlay

    visible: overlay.isShown
    Binding {
        target: stage.overlay
        property: "stageSize"
        value: Qt.size(stage.width, stage.height)
    }
    Binding {
        target: stage.overlay
        property: "hovering"
        value: bodyHover.hovered || handleHover.hovered
    }

    Item {
        id: body
        objectName: "pipOverlay"
        x: stage.overlay.rect.x
        y: stage.overlay.rect.y
        width: stage.overlay.rect.width
        height: stage.overlay.rect.height
        containmentMask: stage.overlay.isCircle ? disc : null
        Accessible.role: Accessible.Pane
        Accessible.name: "摄像头小窗，拖动可移动"

        HoverHandler {
            id: bodyHover
            cursorShape: Qt.OpenHandCursor
        }
        DragHandler {
            readonly property point place: stage.mapFromItem(null, centroid.scenePosition)
            target: null
            dragThreshold: 2
            cursorShape: Qt.ClosedHandCursor
            // What sets it going moves the window as well.
            onActiveChanged: if (active) stage.overlay.move(place.x, place.y)
            onActiveTranslationChanged: stage.overlay.move(place.x, place.y)
        }
        QtObject {
            id: disc
            function contains(point: point): bool {
                return Math.hypot(point.x - body.width / 2, point.y - body.height / 2) <= body.width / 2;
            }
        }
    }

    Rectangle {
        anchors.fill: body
        radius: stage.overlay.isCircle ? width / 2 : 8
        color: "transparent"
        border { width: 2; color: Qt.rgba(1, 1, 1, 0.9) }
        opacity: stage.overlay.hovering || stage.overlay.resizing ? 1 : 0
        Behavior on opacity { NumberAnimation { duration: Theme.quick } }
    }

    // It takes the press for itself, so that the window below does not move along.
    MouseArea {
        id: handle
        objectName: "pipResizeHandle"
        x: stage.overlay.handle.x - width / 2
        y: stage.overlay.handle.y - height / 2
        width: 30
        height: 30
        Accessible.role: Accessible.Grip
        preventStealing: true
        onPositionChanged: (mouse) => stage.overlay.resize(x + mouse.x, y + mouse.y)
        onReleased: stage.overlay.endResize()
        onCanceled: stage.overlay.endResize()
        Accessible.name: "摄像头小窗的大小，拖动可改变"

        HoverHandler {
            id: handleHover
            cursorShape: Qt.SizeFDiagCursor
        }
        Rectangle {
            anchors.centerIn: parent
            width: 14
            height: 14
            radius: 7
            color: Qt.rgba(0, 0, 0, 0.45)
            border { width: 1.5; color: Qt.rgba(1, 1, 1, 0.9) }
            opacity: stage.overlay.hovering || stage.overlay.resizing ? 1 : 0
            Behavior on opacity { NumberAnimation { duration: Theme.quick } }
        }
    }
}
