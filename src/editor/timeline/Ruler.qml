import QtQuick
import Vesk.Theme
import Vesk.Timeline

/// The ruler. Pressed or dragged along, it moves the playhead.
Item {
    id: ruler

    required property TimelineView view

    objectName: "timelineRuler"
    implicitHeight: TimelineLayout.rulerH
    Accessible.role: Accessible.Slider
    Accessible.name: "播放头 " + view.playheadText

    Repeater {
        model: ruler.view.ticks
        Item {
            required property real time
            required property string label

            x: Math.round(time * ruler.view.viewport.pxPerSec)
            height: ruler.height

            Rectangle {
                y: parent.height - height
                width: 1
                height: 7
                color: Theme.t3
            }
            Text {
                // Beside the playhead's handle when that stands on the tick.
                x: 8
                anchors.verticalCenter: parent.verticalCenter
                text: parent.label
                color: Theme.t2
                font { family: Theme.numberFamily; pixelSize: Theme.fontTiny }
            }
        }
    }
    MouseArea {
        anchors.fill: parent
        preventStealing: true
        onPressed: (mouse) => ruler.view.scrub(mouse.x)
        onPositionChanged: (mouse) => ruler.view.scrub(mouse.x)
    }
}
