import QtQuick
import Vesk.Theme
import Vesk.Timeline

/// The handle at one end of a segment. Of a short segment it lies outside for the most part, so
/// that the body can still be taken hold of.
SegmentGrip {
    id: handle

    required property bool isEnd
    required property bool isSelected
    required property color tone
    readonly property real inside: Math.min(width, parent.width / 4)

    x: isEnd ? parent.width - inside : inside - width
    width: TimelineLayout.handleHit
    height: parent.height
    cursorShape: Qt.SizeHorCursor
    Accessible.role: Accessible.Grip
    Accessible.name: isEnd ? "终点" : "起点"

    Rectangle {
        x: handle.isEnd ? handle.inside - width : handle.width - handle.inside
        width: Math.min(TimelineLayout.handleVisual, handle.parent.width / 2)
        height: parent.height
        radius: width / 2
        color: handle.isSelected ? Theme.t1 : handle.tone
        opacity: handle.isSelected || handle.containsMouse || handle.pressed ? 1 : 0.55
    }
}
