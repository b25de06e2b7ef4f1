import QtQuick
import QtQuick.Templates as T
import Vesk.Theme
import Vesk.Timeline

/// Where in the recording the lanes are scrolled to.
T.ScrollBar {
    id: bar

    required property TimelineViewport viewport
    readonly property real whole: Math.max(viewport.contentWidth, viewport.width, 1)

    objectName: "timelineScrollBar"
    implicitHeight: 12
    padding: 3
    orientation: Qt.Horizontal
    size: viewport.width / whole
    minimumSize: 0.03
    position: viewport.contentX / whole
    Accessible.name: "时间轴的滚动条"

    Connections {
        target: bar
        enabled: bar.pressed
        function onPositionChanged() { bar.viewport.contentX = bar.position * bar.whole; }
    }

    contentItem: Rectangle {
        radius: height / 2
        visible: bar.size < 1
        color: bar.pressed ? Theme.t2 : bar.hovered ? Theme.t3 : Theme.borderStrong
    }
}
