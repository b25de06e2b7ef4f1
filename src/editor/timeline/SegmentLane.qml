import QtQuick
import Vesk.Theme
import Vesk.Timeline

/// The effect segments. A tap on empty space adds one there. With the keyboard the arrows choose a
/// segment and Return opens its menu.
Item {
    id: lane

    required property TimelineView view

    signal menuKeyPressed()

    objectName: "segmentLane"
    implicitHeight: TimelineLayout.zoomH
    activeFocusOnTab: view.hasProject
    Accessible.role: Accessible.List
    Accessible.name: "缩放"
    Keys.onLeftPressed: view.stepSelection(-1)
    Keys.onRightPressed: view.stepSelection(1)
    Keys.onReturnPressed: menuKeyPressed()
    Keys.onEnterPressed: menuKeyPressed()
    Keys.onMenuPressed: menuKeyPressed()

    MouseArea {
        anchors.fill: parent
        // With something to drag, if only in name, a drag is no click.
        drag.target: Item {}
        onClicked: (mouse) => lane.view.addSegmentAt(mouse.x)
    }
    Repeater {
        model: lane.view.segments
        SegmentBlock {
            id: block
            view: lane.view
            y: 4
            height: lane.height - 8
            isFocused: lane.activeFocus && isSelected
            onMenuWanted: (x) => menu.openAt(block, x)

            Connections {
                target: lane
                enabled: block.isSelected
                function onMenuKeyPressed() { menu.openAt(block, block.width / 2); }
            }
        }
    }
    LaneFocus {
        viewport: lane.view.viewport
        visible: lane.activeFocus && !lane.view.hasSelection
    }
    SegmentMenu {
        id: menu
        view: lane.view
    }
}
