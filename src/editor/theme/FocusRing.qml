import QtQuick

/// The frame around what has the keyboard, just outside its parent.
Rectangle {
    required property bool shown

    anchors.fill: parent
    anchors.margins: -Theme.focusWidth - 1
    visible: shown
    radius: Theme.radius + Theme.focusWidth + 1
    color: "transparent"
    border.color: Theme.focus
    border.width: Theme.focusWidth
}
