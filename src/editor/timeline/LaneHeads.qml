import QtQuick
import Vesk.Theme
import Vesk.Timeline

/// The names of the lanes, which stay at the left.
Column {
    id: heads

    topPadding: TimelineLayout.rulerH

    LaneHead {
        height: TimelineLayout.markerH
        text: "标记点"
    }
    LaneHead {
        height: TimelineLayout.videoH
        text: "视频"
    }
    LaneHead {
        height: TimelineLayout.zoomH
        text: "缩放"
    }

    component LaneHead: Item {
        property alias text: name.text

        width: heads.width

        Text {
            id: name
            anchors { left: parent.left; leftMargin: Theme.space; verticalCenter: parent.verticalCenter }
            color: Theme.t2
            font { family: Theme.fontFamily; pixelSize: Theme.fontSmall }
        }
        Rectangle {
            width: parent.width
            height: 1
            color: Theme.border
        }
    }
}
