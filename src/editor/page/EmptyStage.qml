import QtQuick
import Vesk.Session
import Vesk.Theme

/// What stands on the stage while no recording is open.
Column {
    id: empty

    required property PreviewController preview

    objectName: "emptyStage"
    spacing: Theme.space

    Icon {
        anchors.horizontalCenter: parent.horizontalCenter
        name: "film"
        size: 36
        color: Theme.t3
    }
    Text {
        width: parent.width
        horizontalAlignment: Text.AlignHCenter
        text: "还没有打开录制"
        color: Theme.t1
        font.family: Theme.fontFamily
        font.pixelSize: Theme.fontTitle
    }
    PushButton {
        anchors.horizontalCenter: parent.horizontalCenter
        objectName: "openLatestButton"
        prominent: true
        text: "打开最近一次录制"
        onClicked: empty.preview.loadLatest()
    }
    Text {
        objectName: "loadErrorText"
        width: parent.width
        visible: text !== ""
        horizontalAlignment: Text.AlignHCenter
        wrapMode: Text.Wrap
        text: empty.preview.loadError
        color: Theme.t2
        font.family: Theme.fontFamily
        font.pixelSize: Theme.fontSmall
        textFormat: Text.PlainText
    }
}
