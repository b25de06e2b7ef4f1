import QtQuick
import Vesk.Theme

/// The bubble that tells where an edge lies while it is trimmed.
Rectangle {
    property alias text: label.text

    objectName: "trimBubble"
    width: label.implicitWidth + 16
    height: label.implicitHeight + 8
    radius: Theme.radiusSmall
    color: Theme.raised
    border { width: 1; color: Theme.borderStrong }

    Text {
        id: label
        anchors.centerIn: parent
        color: Theme.t1
        font { family: Theme.numberFamily; pixelSize: Theme.fontSmall }
    }
}
