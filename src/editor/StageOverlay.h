#pragma once

#include <QObject>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include "editor/EditorUIState.h"
#include "editor/PipGesture.h"
#include "editor/PreviewController.h"

namespace vesk::editor {

/// The handling of the camera's window on the stage: where it lies there, and how it follows a
/// drag. There is none without a camera, and none while the window is switched off. Positions are
/// points on the stage. Main thread.
class StageOverlay : public QObject {
  Q_OBJECT
  Q_PROPERTY(QSizeF stageSize READ stageSize WRITE setStageSize NOTIFY geometryChanged)
  Q_PROPERTY(bool isShown READ isShown NOTIFY isShownChanged)
  Q_PROPERTY(QRectF rect READ rect NOTIFY geometryChanged)
  Q_PROPERTY(QPointF handle READ handle NOTIFY geometryChanged)
  Q_PROPERTY(bool isCircle READ isCircle NOTIFY geometryChanged)
  Q_PROPERTY(bool hovering READ hovering WRITE setHovering NOTIFY hoveringChanged)
  Q_PROPERTY(bool resizing READ resizing NOTIFY resizingChanged)

 public:
  /// Both outlive the overlay.
  StageOverlay(PreviewController& preview, EditorUIState& ui, QObject* parent = nullptr);

  QSizeF stageSize() const { return {stage_.width, stage_.height}; }
  void setStageSize(QSizeF size);

  bool isShown() const { return isShown_; }
  QRectF rect() const;
  QPointF handle() const;
  bool isCircle() const;

  bool hovering() const { return hovering_; }
  void setHovering(bool value);
  bool resizing() const { return resizing_; }

  /// Each step of a drag is one call; the steps of a drag are undone as one.
  Q_INVOKABLE void move(double x, double y);
  Q_INVOKABLE void resize(double x, double y);
  Q_INVOKABLE void endResize();

 Q_SIGNALS:
  void geometryChanged();
  void isShownChanged();
  void hoveringChanged();
  void resizingChanged();

 private:
  PipGesture gesture() const { return {ui_.pip(), stage_}; }
  void change(const package::PiPSettings& pip);
  void setResizing(bool value);
  void updateShown();

  PreviewController& preview_;
  EditorUIState& ui_;
  StageSize stage_;
  bool isShown_ = false;
  bool hovering_ = false;
  bool resizing_ = false;
};

}  // namespace vesk::editor
