import QtQuick
import QtQuick.Layouts
import Vesk.App
import Vesk.Editor
import Vesk.Session
import Vesk.Theme
import Vesk.Timeline

/// The window's content: the bar with the tabs over one of the three pages.
FocusScope {
    id: page

    required property RootView root
    required property PreviewController preview
    required property EditorView editor
    required property EditorKeys keys
    required property StageOverlay overlay
    required property TimelineView timeline

    // What has the keyboard, a text or a menu for example, takes its keys before they come here.
    Keys.enabled: root.isEditPage
    Keys.onPressed: (event) => event.accepted = page.keys.press(event.key, event.modifiers, event.isAutoRepeat)

    ColumnLayout {
        anchors.fill: parent
        spacing: 0

        TopBar {
            Layout.fillWidth: true
            root: page.root
            preview: page.preview
        }
        Rectangle {
            Layout.fillWidth: true
            implicitHeight: 1
            color: Theme.border
        }
        Item {
            Layout.fillWidth: true
            Layout.fillHeight: true

            PagePlace {
                objectName: "recordPage"
                anchors.fill: parent
                visible: page.root.isRecordPage
                iconName: "record"
                title: "录制页还在搭建"
                text: "将来在这里选择录哪儿、镜头语言和要同时录的声音与摄像头，然后开始录制。"
            }
            PagePlace {
                objectName: "libraryPage"
                anchors.fill: parent
                visible: page.root.isLibraryPage
                iconName: "library"
                title: "录制库还在搭建"
                text: "将来在这里浏览、打开和删除已有的录制。"
            }
            EditorPage {
                anchors.fill: parent
                visible: page.root.isEditPage
                preview: page.preview
                editor: page.editor
                overlay: page.overlay
                timeline: page.timeline
            }
        }
    }
}
