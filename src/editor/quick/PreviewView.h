#pragma once

#include <QtQml/qqmlregistration.h>

#include <QQuickItem>
#include <QTimer>

#include "editor/PreviewController.h"

namespace vesk::editor {

/// The finished picture in the window, drawn in the scene graph's own graphics context. Draws when
/// the session shows something else, and not otherwise. While the session plays, each frame of the
/// window is followed by the session's next tick, outside of frames: what changes within one cannot
/// ask for another. Its canvas is the item's size in pixels of the screen.
class PreviewView : public QQuickItem {
  Q_OBJECT
  QML_ELEMENT
  Q_PROPERTY(vesk::editor::PreviewController* controller READ controller WRITE setController NOTIFY
                 controllerChanged REQUIRED)

 public:
  explicit PreviewView(QQuickItem* parent = nullptr);

  PreviewController* controller() const { return controller_; }
  void setController(PreviewController* controller);

 Q_SIGNALS:
  void controllerChanged();
  /// The graphics cannot draw. Emitted on the thread that draws.
  void rendererFailed();

 protected:
  QSGNode* updatePaintNode(QSGNode* node, UpdatePaintNodeData* data) override;
  void itemChange(ItemChange change, const ItemChangeData& value) override;

 private:
  void watchWindow(QQuickWindow* window);
  void beginWaiting();

  PreviewController* controller_ = nullptr;
  QMetaObject::Connection frames_;  ///< of the window
  QTimer nextTick_;
};

}  // namespace vesk::editor
