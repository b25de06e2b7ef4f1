import QtQuick
import Vesk.Theme
import Vesk.Timeline

/// A marker: a ring for a click, with a dot in it for a double click, filled within a segment; a
/// square with a plus or a minus for a manual mark.
MouseArea {
    id: glyph

    required property TimelineView view
    required property int number
    required property real time
    required property bool isClick
    required property bool isDoubleClick
    required property bool isZoomIn
    required property bool isAttached
    required property string help
    required property string name
    required property bool isFocused
    /// Far zoomed out clicks stand close.
    readonly property bool isSmall: view.viewport.pxPerSec < 12
    readonly property color tone: !isClick ? Theme.sky : isAttached ? Theme.amber : Theme.t2

    objectName: "marker_" + number
    x: Math.round(time * view.viewport.pxPerSec) - width / 2
    z: isClick ? 0 : 1
    width: isSmall ? 10 : 16
    hoverEnabled: true
    cursorShape: Qt.PointingHandCursor
    onClicked: view.seekToMarker(time)
    Accessible.role: Accessible.ListItem
    Accessible.name: name

    Connections {
        target: glyph
        enabled: glyph.isClick
        function onDoubleClicked() { glyph.view.toggleEffect(glyph.time); }
    }

    Rectangle {
        id: outline
        anchors.centerIn: parent
        width: (glyph.isDoubleClick || !glyph.isClick ? 12 : 9) - (glyph.isSmall && glyph.isClick ? 4 : 0)
        height: width
        radius: glyph.isClick ? width / 2 : Theme.radiusMark
        color: glyph.isAttached && glyph.isClick ? glyph.tone : Theme.background
        border { width: 1.5; color: glyph.containsMouse ? Theme.t1 : glyph.tone }
    }
    // Most markers are plain clicks, and there may be hundreds of them in view.
    Loader {
        anchors.centerIn: parent
        active: glyph.isDoubleClick || !glyph.isClick || glyph.isFocused || glyph.containsMouse
        sourceComponent: Item {
            Rectangle {
                anchors.centerIn: parent
                visible: glyph.isDoubleClick
                width: glyph.isSmall ? 3 : 4
                height: width
                radius: width / 2
                color: glyph.isAttached ? Theme.background : glyph.tone
            }
            Rectangle {
                anchors.centerIn: parent
                visible: !glyph.isClick
                width: 6
                height: 2
                color: glyph.tone
            }
            Rectangle {
                anchors.centerIn: parent
                visible: glyph.isZoomIn
                width: 2
                height: 6
                color: glyph.tone
            }
            Rectangle {
                anchors.centerIn: parent
                visible: glyph.isFocused
                width: 20
                height: 20
                radius: Theme.radius
                color: "transparent"
                border { width: Theme.focusWidth; color: Theme.focus }
            }
            Tip {
                parent: glyph
                visible: glyph.containsMouse
                text: glyph.help
            }
        }
    }
}
