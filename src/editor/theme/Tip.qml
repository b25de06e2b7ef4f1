import QtQuick
import QtQuick.Templates as T

/// The explanation that comes up when the pointer rests on a control, or the keyboard does.
T.ToolTip {
    id: tip

    delay: 500
    padding: 6
    leftPadding: 9
    rightPadding: 9
    margins: 6
    x: parent ? (parent.width - implicitWidth) / 2 : 0
    y: parent ? parent.height + 6 : 0
    implicitWidth: contentItem.implicitWidth + leftPadding + rightPadding
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutsideParent | T.Popup.CloseOnReleaseOutsideParent

    contentItem: Text {
        text: tip.text
        color: Theme.t1
        font.family: Theme.fontFamily
        font.pixelSize: Theme.fontSmall
        textFormat: Text.PlainText
    }
    background: Rectangle {
        radius: Theme.radiusSmall
        color: Theme.raised
        border.color: Theme.borderStrong
    }
}
