import QtQuick
import Vesk.Theme

/// A page that is still to come, and what it will hold.
Item {
    id: place

    required property string iconName
    required property string title
    required property string text

    Column {
        anchors.centerIn: parent
        width: Math.min(parent.width - 4 * Theme.spaceLarge, 420)
        spacing: Theme.space

        Icon {
            anchors.horizontalCenter: parent.horizontalCenter
            name: place.iconName
            size: 36
            color: Theme.t3
        }
        Text {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            text: place.title
            color: Theme.t1
            font.family: Theme.fontFamily
            font.pixelSize: Theme.fontTitle
        }
        Text {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            lineHeight: 1.3
            text: place.text
            color: Theme.t2
            font.family: Theme.fontFamily
            font.pixelSize: Theme.fontBody
        }
    }
}
