import QtQuick
import Vesk.Theme
import Vesk.Timeline

/// The clicks and the manual marks. A tap goes there, a double tap makes a click an effect or
/// removes its effect. With the keyboard the arrows choose, Return goes there and Return
/// with Control makes or removes the effect.
Item {
    id: lane

    required property TimelineView view

    objectName: "markerLane"
    implicitHeight: TimelineLayout.markerH
    activeFocusOnTab: view.hasProject
    Accessible.role: Accessible.List
    Accessible.name: "标记点"
    Keys.onLeftPressed: view.stepMarker(-1)
    Keys.onRightPressed: view.stepMarker(1)
    Keys.onReturnPressed: view.seekToCurrentMarker()
    Keys.onEnterPressed: view.seekToCurrentMarker()

    Shortcut {
        enabled: lane.activeFocus
        sequences: ["Ctrl+Return", "Ctrl+Enter"]
        onActivated: lane.view.toggleCurrentMarker()
    }
    Repeater {
        model: lane.view.markers
        MarkerGlyph {
            view: lane.view
            height: lane.height
            isFocused: lane.activeFocus && lane.view.currentMarker === number
        }
    }
    LaneFocus {
        viewport: lane.view.viewport
        visible: lane.activeFocus
    }
}
