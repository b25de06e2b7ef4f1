import QtQuick
import Vesk.Theme
import Vesk.Timeline

/// What can be done with a segment.
PopupMenu {
    id: menu

    required property TimelineView view
    property string segmentID
    property bool isEnabled

    function openAt(block: SegmentBlock, x: real) {
        segmentID = block.segmentID;
        isEnabled = block.isEnabled;
        popup(block, x, block.height);
    }

    objectName: "segmentMenu"
    implicitWidth: 120

    PopupMenuItem {
        objectName: "toggleSegmentItem"
        text: menu.isEnabled ? "停用" : "启用"
        onTriggered: menu.view.toggleSegmentEnabled(menu.segmentID)
    }
    PopupMenuItem {
        objectName: "duplicateSegmentItem"
        text: "复制"
        onTriggered: menu.view.duplicateSegment(menu.segmentID)
    }
    PopupMenuItem {
        objectName: "deleteSegmentItem"
        text: "删除"
        textColor: Theme.error
        onTriggered: menu.view.deleteSegment(menu.segmentID)
    }
}
