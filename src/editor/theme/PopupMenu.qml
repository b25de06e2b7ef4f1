import QtQuick
import QtQuick.Templates as T

/// A menu of PopupMenuItems.
T.Menu {
    id: menu

    // The press that closes it is to do nothing else, and the release of the one that opened it
    // does not close it.
    modal: true
    dim: false
    closePolicy: T.Popup.CloseOnEscape | T.Popup.CloseOnPressOutside
    padding: 4
    margins: 6
    overlap: 1
    implicitWidth: 200
    implicitHeight: contentItem.implicitHeight + topPadding + bottomPadding
    delegate: PopupMenuItem {}

    contentItem: ListView {
        implicitHeight: contentHeight
        model: menu.contentModel
        interactive: false
        currentIndex: menu.currentIndex
        clip: true
    }
    background: Rectangle {
        radius: Theme.radiusLarge
        color: Theme.raised
        border.color: Theme.borderStrong
    }
}
