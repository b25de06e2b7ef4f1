import QtQuick
import Vesk.Theme
import Vesk.Timeline
import Vesk.Timeline

/// The effect segments. A tap on empty space adds one there. With the keyboard the arrows choose a
/// segment and Return opens its menu.
Item {
    id: lane

    required property TimelineView view

    objectName: "segmentLane"
    implicitHeight: TimelineLayout.zoomH
    activeFocusOnTab: view.hasProject
    Accessible.role: Accessible.List
    Accessible.name: "缩放"
    Keys.onLeftPressed: view.stepSelection(-1)
    Keys.onRightPressed: view.stepSelection(1)
    Keys.onReturnPressed: selected()?.openMenu()
    Keys.onMenuPressed: selected()?.openMenu()

    function selected(): SegmentBlock {
        for (let i = 0; i < blocks.count; ++i) {
            if ((blocks.itemAt(i) as SegmentBlock)?.isSelected) return blocks.itemAt(i) as SegmentBlock;
        }
        return null;
    }

    MouseArea {
        anchors.fill: parent
        onClicked: (mouse) => lane.view.addSegmentAt(mouse.x)
    }
    Repeater {
        id: blocks
        model: lane.view.segments
        SegmentBlock {
            id: block
            view: lane.view
            y: 4
            height: lane.height - 8
            isFocused: lane.activeFocus && isSelected
            onMenuWanted: (x) => menu.openAt(block, x)
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
