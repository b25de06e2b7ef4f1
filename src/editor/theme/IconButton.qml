import QtQuick
import QtQuick.Templates as T

/// A button that shows an icon and explains itself in a tip.
T.AbstractButton {
    id: control

    required property string iconName
    /// What it does, for the tip and for screen readers.
    required property string tip
    property color iconColor: Theme.t1
    property real iconSize: Theme.iconSize
    /// While what it opens is open, there is nothing to explain.
    property bool isOpen: false

    implicitWidth: Theme.controlHeight
    implicitHeight: Theme.controlHeight
    // By the pointer it takes no focus, so that the space bar stays with the page.
    focusPolicy: Qt.TabFocus
    hoverEnabled: true
    opacity: enabled ? 1 : Theme.disabledOpacity
    Accessible.name: tip

    contentItem: Item {
        Icon {
            anchors.centerIn: parent
            name: control.iconName
            color: control.iconColor
            size: control.iconSize
        }
    }
    background: Rectangle {
        radius: Theme.radius
        color: control.down || control.isOpen ? Theme.pressed : control.hovered ? Theme.hovered : "transparent"
        FocusRing { shown: control.visualFocus }
    }
    Tip {
        visible: (control.hovered || control.visualFocus) && !control.down && !control.isOpen
        text: control.tip
    }
}
