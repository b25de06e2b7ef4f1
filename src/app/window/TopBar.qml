import QtQuick
import Vesk.App
import Vesk.Editor
import Vesk.Session
import Vesk.Theme

/// The tabs of the pages, what is open, and the menu.
Item {
    id: bar

    required property RootView root
    required property PreviewController preview

    implicitHeight: 46

    Row {
        id: tabs
        anchors { left: parent.left; leftMargin: Theme.space; verticalCenter: parent.verticalCenter }
        spacing: Theme.spaceTiny
        Accessible.role: Accessible.PageTabList
        Accessible.name: "页面"

        Repeater {
            model: bar.root.tabs
            PageTab {
                required property int index
                required property string modelData
                objectName: "tab_" + ["record", "library", "edit"][index]
                text: modelData
                current: bar.root.mode === index
                onClicked: bar.root.pickTab(index)
            }
        }
    }
    Text {
        readonly property real room: Math.min(bar.width / 2 - tabs.x - tabs.width, bar.width / 2 - buttons.width - Theme.space)
        objectName: "recordingTitle"
        anchors.centerIn: parent
        width: Math.max(0, Math.min(implicitWidth, 2 * (room - Theme.space)))
        visible: bar.root.isEditPage
        text: bar.preview.title
        elide: Text.ElideMiddle
        color: Theme.t2
        font.family: Theme.fontFamily
        font.pixelSize: Theme.fontBody
        textFormat: Text.PlainText
    }
    Row {
        id: buttons
        anchors { right: parent.right; rightMargin: Theme.space; verticalCenter: parent.verticalCenter }
        spacing: Theme.spaceTiny

        HistoryButtons {
            visible: bar.root.isEditPage
            preview: bar.preview
        }
        IconButton {
            objectName: "menuButton"
            iconName: "menu"
            tip: "菜单"
            isOpen: menu.visible
            onClicked: menu.popup(0, height + Theme.spaceTiny)

            AppMenu {
                id: menu
                preview: bar.preview
            }
        }
    }
}
