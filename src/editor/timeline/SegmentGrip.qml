import QtQuick
import Vesk.Timeline

/// A part of a segment by which it can be taken hold of, a child of its block. Tapped, it selects
/// the segment; what a drag does is for whoever begins it to say.
MouseArea {
    id: grip

    required property TimelineView view
    required property string segmentID

    function laneX(mouse: MouseEvent): real {
        return parent.x + x + mouse.x;
    }

    hoverEnabled: true
    preventStealing: true
    onReleased: view.endDrag(segmentID)
    onCanceled: view.endDrag(segmentID)
    onClicked: view.select(segmentID)

    Connections {
        target: grip
        enabled: grip.pressed
        function onPositionChanged(mouse) {
            grip.view.drag(grip.segmentID, grip.laneX(mouse), mouse.modifiers & Qt.AltModifier);
        }
    }
}
