import QtQuick
import QtQuick.Layouts
import Vesk.Session
import Vesk.Theme
import Vesk.Timeline

/// The bar over the lanes: what is selected, and the buttons.
RowLayout {
    id: header

    required property TimelineView view
    required property EditorView editor

    implicitHeight: 40
    spacing: Theme.spaceTiny
    enabled: view.hasProject

    Text {
        Layout.leftMargin: Theme.space
        text: "时间轴"
        color: Theme.t1
        font { family: Theme.fontFamily; pixelSize: Theme.fontBody; weight: Font.Medium }
    }
    Text {
        objectName: "timelinePlayheadText"
        Layout.leftMargin: Theme.spaceSmall
        text: header.view.playheadText
        color: Theme.t2
        font { family: Theme.numberFamily; pixelSize: Theme.fontBody }
    }
    Text {
        objectName: "manualEditsText"
        Layout.leftMargin: Theme.spaceSmall
        visible: header.view.hasProject && header.view.hasManualEdits
        text: "已手动编辑"
        color: Theme.amber
        font { family: Theme.fontFamily; pixelSize: Theme.fontSmall }
    }
    Item {
        Layout.fillWidth: true
    }
    RowLayout {
        visible: header.view.hasSelection
        spacing: Theme.spaceSmall

        Text {
            objectName: "selectionText"
            text: header.view.selectionText
            color: Theme.t2
            font { family: Theme.numberFamily; pixelSize: Theme.fontBody }
        }
        PushButton {
            objectName: "toggleSelectedButton"
            text: header.view.selectionToggleText
            onClicked: header.view.toggleSegmentEnabled(header.view.selectedSegmentID)
        }
        PushButton {
            objectName: "deleteSelectedButton"
            text: "删除"
            onClicked: header.editor.deleteSelectedSegment()
        }
        HeaderLine {}
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
        Layout.rightMargin: Theme.spaceSmall
        iconName: "fit"
        tip: "适合窗口"
        onClicked: header.view.fit()
    }

    component HeaderLine: Rectangle {
        Layout.leftMargin: Theme.spaceTiny
        Layout.rightMargin: Theme.spaceTiny
        implicitWidth: 1
        implicitHeight: 16
        color: Theme.border
    }
}
