import QtQuick
import Vesk.Theme

/// The line through all lanes at the present time, with its handle on the ruler.
Item {
    id: playhead

    objectName: "timelinePlayhead"

    Rectangle {
        x: -0.5
        width: 1
        height: parent.height
        color: Theme.t1
    }
    Rectangle {
        x: -width / 2
        y: 3
        width: 11
        height: 9
        radius: Theme.radiusTiny
        color: Theme.t1
    }
    Rectangle {
        x: -width / 2
        y: 8
        width: 7.8
        height: 7.8
        rotation: 45
        radius: Theme.radiusTiny / 2
        color: Theme.t1
    }
}
