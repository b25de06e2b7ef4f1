import QtQuick
import QtQuick.Templates as T

/// One entry of a PopupMenu, with the keys that do the same.
T.MenuItem {
    id: item

    property string keys
    property color textColor: Theme.t1

    implicitWidth: ListView.view ? ListView.view.width : 192
    implicitHeight: 28
    leftPadding: 10
    rightPadding: 10
    hoverEnabled: true
    opacity: enabled ? 1 : Theme.disabledOpacity
    Accessible.name: text

    contentItem: Item {
        Text {
            anchors { left: parent.left; verticalCenter: parent.verticalCenter }
            text: item.text
            color: item.textColor
            font.family: Theme.fontFamily
            font.pixelSize: Theme.fontBody
            textFormat: Text.PlainText
        }
        Text {
            anchors { right: parent.right; verticalCenter: parent.verticalCenter }
            text: item.keys
            color: Theme.t2
            font.family: Theme.fontFamily
            font.pixelSize: Theme.fontBody
            textFormat: Text.PlainText
        }
    }
    background: Rectangle {
        radius: Theme.radiusSmall
        color: item.highlighted ? Theme.pressed : "transparent"
    }
}
