import QtQuick
import Vesk.Session
import Vesk.Theme

/// Under the stage: the time, and the buttons that move it.
Rectangle {
    id: bar

    required property PreviewController preview
    required property EditorView editor

    implicitHeight: 48
    color: Theme.background

    Rectangle {
        width: parent.width
        height: 1
        color: Theme.border
    }
    Row {
        anchors { left: parent.left; leftMargin: Theme.space; verticalCenter: parent.verticalCenter }
        spacing: Theme.spaceTiny
        Text {
            objectName: "timeText"
            text: bar.editor.timeText
            color: bar.enabled ? Theme.t1 : Theme.t3
            font.family: Theme.numberFamily
            font.pixelSize: Theme.fontLarge
        }
        Text {
            objectName: "durationText"
            text: "/ " + bar.editor.durationText
            color: bar.enabled ? Theme.t2 : Theme.t3
            font.family: Theme.numberFamily
            font.pixelSize: Theme.fontLarge
        }
    }
    Row {
        anchors.centerIn: parent
        spacing: Theme.spaceSmall

        StepButton {
            objectName: "previousFrameButton"
            anchors.verticalCenter: parent.verticalCenter
            iconName: "previousFrame"
            tip: "上一帧 ←（按住 ⇧ 跳 1 秒）"
            editor: bar.editor
            direction: -1
        }
        IconButton {
            objectName: "playButton"
            implicitWidth: 36
            implicitHeight: 36
            iconSize: 18
            iconName: bar.preview.isPlaying ? "pause" : "play"
            tip: bar.preview.isPlaying ? "暂停 空格" : "播放 空格"
            onClicked: bar.preview.togglePlaying()
        }
        StepButton {
            objectName: "nextFrameButton"
            anchors.verticalCenter: parent.verticalCenter
            iconName: "nextFrame"
            tip: "下一帧 →（按住 ⇧ 跳 1 秒）"
            editor: bar.editor
            direction: 1
        }
    }
}
