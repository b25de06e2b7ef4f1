import QtQuick
import Vesk.Theme

/// One thing that the user should know, above the stage.
Rectangle {
    id: notice

    required property string text

    implicitHeight: Math.max(icon.height, message.implicitHeight) + 2 * Theme.spaceSmall
    color: Qt.rgba(Theme.amber.r, Theme.amber.g, Theme.amber.b, 0.1)
    Accessible.role: Accessible.AlertMessage
    Accessible.name: text

    Icon {
        id: icon
        anchors { left: parent.left; leftMargin: Theme.spaceLarge; verticalCenter: parent.verticalCenter }
        name: "warning"
        color: Theme.amber
    }
    Text {
        id: message
        anchors {
            left: icon.right
            leftMargin: Theme.spaceSmall
            right: parent.right
            rightMargin: Theme.spaceLarge
            verticalCenter: parent.verticalCenter
        }
        text: notice.text
        color: Theme.t1
        wrapMode: Text.Wrap
        font.family: Theme.fontFamily
        font.pixelSize: Theme.fontBody
        textFormat: Text.PlainText
    }
}
