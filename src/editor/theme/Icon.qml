import QtQuick
import QtQuick.Shapes

/// One of the icons of IconPaths. A name without an outline shows nothing.
Shape {
    id: icon

    required property string name
    property color color: Theme.t1
    property real size: Theme.iconSize

    implicitWidth: size
    implicitHeight: size
    // Shapes have no smooth edges of their own.
    layer.enabled: true
    layer.smooth: true
    layer.samples: 4
    layer.textureSize: Qt.size(size * 2 * Screen.devicePixelRatio, size * 2 * Screen.devicePixelRatio)

    ShapePath {
        strokeColor: icon.color
        strokeWidth: 1.3 * icon.size / 16
        fillColor: "transparent"
        capStyle: ShapePath.RoundCap
        joinStyle: ShapePath.RoundJoin
        scale: Qt.size(icon.size / 16, icon.size / 16)
        PathSvg { path: IconPaths.strokes[icon.name] ?? "" }
    }
    ShapePath {
        strokeWidth: -1
        fillColor: icon.color
        scale: Qt.size(icon.size / 16, icon.size / 16)
        PathSvg { path: IconPaths.fills[icon.name] ?? "" }
    }
}
