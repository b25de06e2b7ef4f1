import QtQuick
import Vesk.Theme
import Vesk.Timeline

/// The ruler and the lanes below it, as far as they are scrolled into view.
Item {
    id: lanes

    required property TimelineView view
    readonly property TimelineViewport viewport: view.viewport
    /// What lies before the first moment and behind the last one, for what stands there.
    readonly property real gutter: 8

    objectName: "timelineLanes"
    implicitHeight: TimelineLayout.rulerH + TimelineLayout.markerH + TimelineLayout.videoH + TimelineLayout.zoomH
    clip: true

    Binding {
        target: lanes.viewport
        property: "width"
        value: lanes.width - 2 * lanes.gutter
    }
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.NoButton
        onWheel: (wheel) => lanes.viewport.wheel(wheel.pixelDelta, wheel.angleDelta,
                                                 wheel.modifiers & Qt.ControlModifier, wheel.x - lanes.gutter)
    }
    Column {
        id: column
        x: lanes.gutter - lanes.viewport.contentX
        width: lanes.viewport.contentWidth
        visible: lanes.view.hasProject

        Ruler {
            width: parent.width
            view: lanes.view
        }
        MarkerLane {
            width: parent.width
            view: lanes.view
        }
        VideoLane {
            width: parent.width
            view: lanes.view
        }
        SegmentLane {
            width: parent.width
            view: lanes.view
        }
    }
    Repeater {
        model: [TimelineLayout.rulerH, TimelineLayout.rulerH + TimelineLayout.markerH,
                TimelineLayout.rulerH + TimelineLayout.markerH + TimelineLayout.videoH]
        Rectangle {
            required property real modelData
            y: modelData
            width: lanes.width
            height: 1
            color: Theme.border
        }
    }
    Playhead {
        x: column.x + lanes.view.playheadX
        height: column.height
        visible: lanes.view.hasProject
    }
    HoverBubble {
        x: Math.max(4, Math.min(column.x + lanes.view.hoverX - width / 2, lanes.width - width - 4))
        y: column.height - TimelineLayout.zoomH - height - 4
        visible: lanes.view.isHovering
        text: lanes.view.hoverText
    }
}
