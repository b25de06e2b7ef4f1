pragma Singleton
import QtQuick

/// Colours, sizes and forms of the whole window. Every text colour keeps a contrast of 4.5 : 1 on
/// every surface below.
QtObject {
    // Surfaces, from the back to the front.
    readonly property color background: Qt.rgba(0.039, 0.039, 0.039, 1)
    readonly property color stage: Qt.rgba(0.078, 0.078, 0.078, 1)
    readonly property color raised: Qt.rgba(0.11, 0.11, 0.11, 1)
    readonly property color hovered: Qt.rgba(1, 1, 1, 0.08)
    readonly property color pressed: Qt.rgba(1, 1, 1, 0.14)

    readonly property color film: Qt.rgba(1, 1, 1, 0.07)

    readonly property color border: Qt.rgba(1, 1, 1, 0.1)
    readonly property color borderStrong: Qt.rgba(1, 1, 1, 0.2)

    // Text: what matters, what goes with it, what may be overlooked.
    readonly property color t1: Qt.rgba(0.92, 0.92, 0.92, 1)
    readonly property color t2: Qt.rgba(0.639, 0.639, 0.639, 1)
    readonly property color t3: Qt.rgba(0.54, 0.54, 0.54, 1)
    readonly property color brightest: "white"
    readonly property color onLight: "black"

    readonly property color amber: Qt.rgba(1, 0.74, 0.28, 1)
    readonly property color sky: Qt.rgba(0.42, 0.76, 1, 1)
    readonly property color error: Qt.rgba(1, 0.48, 0.45, 1)
    readonly property color focus: sky
    // What lies on a picture, which may be as bright or as dark as it likes.
    readonly property color overPicture: Qt.rgba(1, 1, 1, 0.9)
    readonly property color overPictureFill: Qt.rgba(0, 0, 0, 0.45)
    /// Of what cannot be used now.
    readonly property real disabledOpacity: 0.4

    // The Simplified Chinese face by name: by fallback alone Japanese forms may come up.
    readonly property string fontFamily: "Noto Sans CJK SC"
    readonly property string numberFamily: "Noto Sans Mono CJK SC"
    readonly property int fontTiny: 10
    readonly property int fontSmall: 11
    readonly property int fontBody: 12
    readonly property int fontLarge: 13
    readonly property int fontTitle: 15

    readonly property int radiusTiny: 2
    readonly property int radiusMark: 3
    readonly property int radiusSmall: 4
    readonly property int radiusSegment: 5
    readonly property int radius: 6
    readonly property int radiusLarge: 8

    readonly property int spaceTiny: 4
    readonly property int spaceSmall: 8
    readonly property int space: 12
    readonly property int spaceLarge: 16

    readonly property int controlHeight: 28
    readonly property int iconSize: 16
    readonly property int focusWidth: 2

    readonly property int quick: 120
}
