import QtQuick
import Vesk.Theme
import Vesk.Timeline

/// The frame around a lane that has the keyboard, as far as the lane is seen.
Rectangle {
    required property TimelineViewport viewport

    x: viewport.contentX - 6
    width: viewport.width + 12
    height: parent.height
    radius: Theme.radiusSmall
    color: "transparent"
    border { width: 1; color: Theme.focus }
}
