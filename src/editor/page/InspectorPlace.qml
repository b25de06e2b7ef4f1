import QtQuick
import Vesk.Theme

/// Where the settings of look and motion will stand.
Item {
    objectName: "inspectorPlace"

    Column {
        anchors.centerIn: parent
        width: parent.width - 2 * Theme.spaceLarge
        spacing: Theme.spaceSmall

        Icon {
            anchors.horizontalCenter: parent.horizontalCenter
            name: "inspector"
            size: 24
            color: Theme.t3
        }
        Text {
            width: parent.width
            horizontalAlignment: Text.AlignHCenter
            wrapMode: Text.Wrap
            text: "外观与运镜的设置还在搭建"
            color: Theme.t3
            font.family: Theme.fontFamily
            font.pixelSize: Theme.fontBody
        }
    }
}
