import QtQuick
import Vesk.Theme
import Vesk.Timeline

/// A segment: to be moved by its body and trimmed by the handles at its ends.
Item {
    id: block

    required property TimelineView view
    required property string segmentID
    required property real start
    required property real end
    required property string levelText
    required property bool isEnabled
    required property bool isManual
    required property string name
    required property bool isFocused
    readonly property bool isSelected: view.selectedSegmentID === segmentID
    readonly property bool isPointed: body.containsMouse || startHandle.containsMouse || endHandle.containsMouse
    readonly property color tone: !isEnabled ? Theme.t3 : isManual ? Theme.amber : Theme.sky

    signal menuWanted(real x)

    objectName: "segment_" + segmentID
    x: Math.round(start * view.viewport.pxPerSec)
    z: isSelected ? 1 : 0
    width: Math.max(Math.round(end * view.viewport.pxPerSec) - x, 2)
    Accessible.role: Accessible.ListItem
    Accessible.name: name
    Accessible.selected: isSelected

    Rectangle {
        anchors.fill: parent
        radius: Theme.radiusSegment
        color: Qt.rgba(block.tone.r, block.tone.g, block.tone.b,
                       !block.isEnabled ? 0.06 : block.isSelected ? 0.34 : block.isPointed ? 0.28 : 0.2)
        border {
            width: block.isSelected ? 1.5 : 1
            color: block.isSelected ? Theme.t1 : Qt.rgba(block.tone.r, block.tone.g, block.tone.b, 0.7)
        }
    }
    Row {
        anchors { left: parent.left; leftMargin: 11; verticalCenter: parent.verticalCenter }
        spacing: 6
        Text {
            id: level
            visible: block.width >= implicitWidth + 20
            text: block.levelText
            color: block.isEnabled ? Theme.t1 : Theme.t2
            font { family: Theme.numberFamily; pixelSize: Theme.fontSmall; strikeout: !block.isEnabled }
        }
        Text {
            visible: block.width >= level.implicitWidth + implicitWidth + 28
            text: !block.isEnabled ? "已停用" : block.isManual ? "手动" : "自动"
            color: block.isEnabled ? Theme.t1 : Theme.t2
            font { family: Theme.fontFamily; pixelSize: Theme.fontTiny }
        }
    }
    MouseArea {
        anchors.fill: parent
        acceptedButtons: Qt.RightButton
        onPressed: (mouse) => block.menuWanted(mouse.x)
    }
    SegmentGrip {
        id: body
        anchors.fill: parent
        view: block.view
        segmentID: block.segmentID
        cursorShape: pressed ? Qt.ClosedHandCursor : Qt.OpenHandCursor
        onPressed: (mouse) => block.view.beginMove(block.segmentID, laneX(mouse))
    }
    TrimHandle {
        id: startHandle
        objectName: "trimStart_" + block.segmentID
        view: block.view
        segmentID: block.segmentID
        isEnd: false
        isSelected: block.isSelected
        tone: block.tone
        onPressed: (mouse) => block.view.beginTrimL(block.segmentID, laneX(mouse))
    }
    TrimHandle {
        id: endHandle
        objectName: "trimEnd_" + block.segmentID
        view: block.view
        segmentID: block.segmentID
        isEnd: true
        isSelected: block.isSelected
        tone: block.tone
        onPressed: (mouse) => block.view.beginTrimR(block.segmentID, laneX(mouse))
    }
    Rectangle {
        anchors { fill: parent; margins: -3 }
        visible: block.isFocused
        radius: Theme.radiusSegment + 3
        color: "transparent"
        border { width: Theme.focusWidth; color: Theme.focus }
    }
}
