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
        containmentMask: RoundedShape {
            size: Qt.size(body.width, body.height)
            radius: outline.radius
        }
        Accessible.role: Accessible.Pane
        Accessible.name: "摄像头小窗，拖动可移动"

        HoverHandler {
            id: bodyHover
            cursorShape: Qt.OpenHandCursor
        }
        DragHandler {
            readonly property point place: stage.mapFromItem(null, centroid.scenePosition)
            target: null
            // It begins beyond this, at 2 points.
            dragThreshold: 1
            cursorShape: Qt.ClosedHandCursor
            // What sets it going moves the window as well.
            onActiveChanged: if (active) stage.overlay.move(place.x, place.y)
            onActiveTranslationChanged: stage.overlay.move(place.x, place.y)
        }
    }

    Rectangle {
        id: outline
        anchors.fill: body
        radius: stage.overlay.isCircle ? width / 2 : Theme.radiusLarge
        color: "transparent"
        border { width: 2; color: Theme.overPicture }
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

        // In an item of its own: an area with a handler of any kind takes every button.
        Item {
            anchors.fill: parent

            HoverHandler {
                id: handleHover
                cursorShape: Qt.SizeFDiagCursor
            }
        }
        Rectangle {
            anchors.centerIn: parent
            width: 14
            height: 14
            radius: width / 2
            color: Theme.overPictureFill
            border { width: 1.5; color: Theme.overPicture }
            opacity: stage.overlay.hovering || stage.overlay.resizing ? 1 : 0
            Behavior on opacity { NumberAnimation { duration: Theme.quick } }
        }
    }
}
