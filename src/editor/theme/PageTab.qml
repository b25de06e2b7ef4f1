import QtQuick
import QtQuick.Templates as T

/// The tab of one page of the window.
T.AbstractButton {
    id: control

    required property bool current

    implicitWidth: label.implicitWidth + 28
    implicitHeight: 26
    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    Accessible.role: Accessible.PageTab
    Accessible.name: text
    Accessible.selected: current

    contentItem: Text {
        id: label
        text: control.text
        horizontalAlignment: Text.AlignHCenter
        verticalAlignment: Text.AlignVCenter
        color: control.current ? Theme.onLight : Theme.t2
        font.family: Theme.fontFamily
        font.pixelSize: Theme.fontBody
        font.weight: control.current ? Font.Medium : Font.Normal
        textFormat: Text.PlainText
    }
    background: Rectangle {
        radius: Theme.radius
        color: control.current ? Theme.t1 : control.hovered ? Theme.hovered : "transparent"
        FocusRing { shown: control.visualFocus }
    }
}
