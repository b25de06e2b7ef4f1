import QtQuick
import QtQuick.Templates as T

/// A button with a text, and before it an icon where one is named.
T.AbstractButton {
    id: control

    property string iconName
    property string tip
    /// The one that the page suggests.
    property bool prominent: false
    readonly property color textColor: prominent ? Theme.onLight : Theme.t1

    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: Theme.controlHeight
    leftPadding: 12
    rightPadding: 12
    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    opacity: enabled ? 1 : Theme.disabledOpacity
    Accessible.name: text

    contentItem: Item {
        implicitWidth: row.implicitWidth
        Row {
            id: row
            anchors.centerIn: parent
            spacing: 6
            Icon {
                anchors.verticalCenter: parent.verticalCenter
                visible: control.iconName !== ""
                name: control.iconName
                color: control.textColor
                size: 14
            }
            Text {
                anchors.verticalCenter: parent.verticalCenter
                text: control.text
                color: control.textColor
                font.family: Theme.fontFamily
                font.pixelSize: Theme.fontBody
                textFormat: Text.PlainText
            }
        }
    }
    background: Rectangle {
        radius: Theme.radius
        color: control.prominent ? (control.down ? Theme.t2 : control.hovered ? Theme.brightest : Theme.t1)
                                 : (control.down ? Theme.pressed : control.hovered ? Theme.hovered : "transparent")
        border.width: control.prominent ? 0 : 1
        border.color: Theme.border
        FocusRing { shown: control.visualFocus }
    }
    Tip {
        visible: text !== "" && (control.hovered || control.visualFocus) && !control.down
        text: control.tip
    }
}
