import QtQuick
import Vesk.Theme
import Vesk.Timeline
import Vesk.Timeline

/// The handle at one end of a segment. Of a short segment it lies outside for the most part, so
/// that the body can still be taken hold of.
MouseArea {
    id: handle

    required property Item block
    required property bool isEnd
    readonly property real inside: Math.min(width, block.width / 4)

    function laneX(mouse: MouseEvent): real {
        return block.x + x + mouse.x;
    }

    x: isEnd ? block.width - inside : inside - width
    width: TimelineLayout.handleHit
    height: block.height
    hoverEnabled: true
    preventStealing: true
    cursorShape: Qt.SizeHorCursor
    onPositionChanged: (mouse) => {
        if (pressed) block.view.drag(block.segmentID, laneX(mouse), mouse.modifiers & Qt.AltModifier);
    }
    onReleased: block.view.endDrag(block.segmentID)
    onCanceled: block.view.endDrag(block.segmentID)
    Accessible.role: Accessible.Grip
    Accessible.name: isEnd ? "终点" : "起点"

    Rectangle {
        x: handle.isEnd ? handle.inside - width : handle.width - handle.inside
        width: Math.min(TimelineLayout.handleVisual, handle.block.width / 2)
        height: parent.height
        radius: 2.5
        color: handle.block.isSelected ? Theme.t1 : handle.block.tone
        opacity: handle.block.isSelected || handle.containsMouse || handle.pressed ? 1 : 0.55
    }
}
