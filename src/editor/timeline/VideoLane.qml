import QtQuick
import Vesk.Theme
import Vesk.Timeline

/// The recording as one bar with its name. Of a long one only the part in view is drawn.
Item {
    id: lane

    required property TimelineView view
    readonly property TimelineViewport viewport: view.viewport
    readonly property real margin: 40
    readonly property real from: Math.max(0, viewport.contentX - margin)
    readonly property real to: Math.min(viewport.contentWidth, viewport.contentX + viewport.width + margin)

    objectName: "videoLane"
    implicitHeight: TimelineLayout.videoH
    Accessible.role: Accessible.StaticText
    Accessible.name: "视频 " + view.title

    Rectangle {
        x: lane.from
        y: 6
        width: lane.to - lane.from
        height: lane.height - 11
        radius: Theme.radius
        color: Theme.film
        border { width: 1; color: Theme.border }

        Icon {
            id: film
            x: title.x - width - 6
            anchors.verticalCenter: parent.verticalCenter
            visible: parent.width > 60
            name: "film"
            color: Theme.t2
            size: 14
        }
        Text {
            id: title
            x: Math.max(0, lane.viewport.contentX - lane.from) + 32
            width: Math.min(implicitWidth, parent.width - x - 10)
            anchors.verticalCenter: parent.verticalCenter
            visible: parent.width > 60
            text: lane.view.title
            elide: Text.ElideRight
            color: Theme.t1
            font { family: Theme.fontFamily; pixelSize: Theme.fontSmall }
            textFormat: Text.PlainText
        }
    }
}
