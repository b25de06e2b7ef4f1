import QtQuick
import Vesk.Session
import Vesk.Theme
import Vesk.Timeline

/// The bar over the lanes: what is selected, and the buttons.
Item {
    id: header

    required property TimelineView view
    required property EditorView editor

    implicitHeight: 40
    enabled: view.hasProject

    Row {
        anchors { left: parent.left; leftMargin: Theme.space; verticalCenter: parent.verticalCenter }
        spacing: Theme.space

        Text {
            id: title
            text: "时间轴"
            color: Theme.t1
            font { family: Theme.fontFamily; pixelSize: Theme.fontBody; weight: Font.Medium }
        }
        Text {
            readonly property real others: title.implicitWidth + (manualEdits.visible ? manualEdits.implicitWidth + Theme.space : 0)
            objectName: "timelinePlayheadText"
            // The transport bar has the time as well, so that this one is the first to make room.
            visible: header.width - tools.width >= others + implicitWidth + 4 * Theme.space
            text: header.view.playheadText
            color: Theme.t2
            font { family: Theme.numberFamily; pixelSize: Theme.fontBody }
        }
        Text {
            id: manualEdits
            objectName: "manualEditsText"
            anchors.verticalCenter: parent.verticalCenter
            visible: header.view.hasProject && header.view.hasManualEdits
            text: "已手动编辑"
            color: Theme.amber
            font { family: Theme.fontFamily; pixelSize: Theme.fontSmall }
        }
    }
    Row {
        id: tools
        anchors { right: parent.right; rightMargin: Theme.spaceSmall; verticalCenter: parent.verticalCenter }
        spacing: Theme.spaceTiny

        SelectionActions {
            visible: header.view.hasSelection
            view: header.view
            editor: header.editor
        }
        HeaderLine {
            visible: header.view.hasSelection
        }
        IconButton {
            objectName: "addSegmentButton"
            iconName: "plus"
            tip: "在播放头处新建效果段 M"
            onClicked: header.editor.addSegmentAtPlayhead()
        }
        IconButton {
            objectName: "deleteSegmentButton"
            iconName: "trash"
            tip: "删除选中的效果段 ⌫"
            enabled: header.editor.canDelete
            onClicked: header.editor.deleteSelectedSegment()
        }
        HeaderLine {}
        IconButton {
            objectName: "zoomOutButton"
            iconName: "zoomOut"
            tip: "缩小时间轴"
            enabled: header.view.viewport.canZoomOut
            onClicked: header.view.zoomOut()
        }
        IconButton {
            objectName: "zoomInButton"
            iconName: "zoomIn"
            tip: "放大时间轴"
            enabled: header.view.viewport.canZoomIn
            onClicked: header.view.zoomIn()
        }
        IconButton {
            objectName: "fitButton"
            iconName: "fit"
            tip: "适合窗口"
            onClicked: header.view.fit()
        }
    }

    component HeaderLine: Item {
        implicitWidth: 9
        implicitHeight: Theme.controlHeight

        Rectangle {
            anchors.centerIn: parent
            width: 1
            height: 16
            color: Theme.border
        }
    }
}
