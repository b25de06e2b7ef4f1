import QtQuick
import Vesk.Theme
import Vesk.Timeline
import Vesk.Timeline

/// The clicks and the manual marks. A tap goes there, a double tap makes a click an effect or
/// removes its effect. With the keyboard the arrows choose, Return goes there and Enter with
/// Control makes or removes the effect.
Item {
    id: lane

    required property TimelineView view
    /// The one under the pointer: all share one tip.
    property MarkerGlyph pointed: null

    objectName: "markerLane"
    implicitHeight: TimelineLayout.markerH
    activeFocusOnTab: view.hasProject
    Accessible.role: Accessible.List
    Accessible.name: "标记点"
    Keys.onLeftPressed: view.stepMarker(-1)
    Keys.onRightPressed: view.stepMarker(1)
    Keys.onReturnPressed: (event) => event.modifiers & Qt.ControlModifier ? view.toggleCurrentMarker()
                                                                          : view.seekToCurrentMarker()

    Repeater {
        model: lane.view.markers
        MarkerGlyph {
            id: glyph
            view: lane.view
            height: lane.height
            isFocused: lane.activeFocus && lane.view.currentMarker === number
            onEntered: lane.pointed = glyph
            onExited: if (lane.pointed === glyph) lane.pointed = null
        }
    }
    LaneFocus {
        viewport: lane.view.viewport
        visible: lane.activeFocus
    }
    Tip {
        parent: lane.pointed ?? lane
        visible: lane.pointed !== null
        text: lane.pointed?.help ?? ""
    }
}
