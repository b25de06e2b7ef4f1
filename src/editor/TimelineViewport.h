#pragma once

#include <QObject>
#include <QPoint>
#include <cmath>

#include "editor/EditorUIState.h"
#include "editor/TimeRange.h"

namespace vesk::editor {

/// The part of the lanes that is seen: how they are scaled, and how far they are scrolled. Lengths
/// in points; x from the start of the lanes. Main thread.
class TimelineViewport : public QObject {
  Q_OBJECT
  Q_PROPERTY(double pxPerSec READ pxPerSec NOTIFY scaleChanged)
  Q_PROPERTY(bool canZoomIn READ canZoomIn NOTIFY scaleChanged)
  Q_PROPERTY(bool canZoomOut READ canZoomOut NOTIFY scaleChanged)
  Q_PROPERTY(double contentWidth READ contentWidth NOTIFY contentWidthChanged)
  /// The left edge of what is seen, in whole points, so that nothing is drawn between pixels. What
  /// is set counts with its fractions, so that small steps add up.
  Q_PROPERTY(double contentX READ contentX WRITE setContentX NOTIFY contentXChanged)
  Q_PROPERTY(double width READ width WRITE setWidth NOTIFY widthChanged)

 public:
  /// @param ui outlives the viewport and holds the scale.
  explicit TimelineViewport(EditorUIState& ui, QObject* parent = nullptr);

  double pxPerSec() const { return ui_.pxPerSec(); }
  bool canZoomIn() const;
  bool canZoomOut() const;
  double contentWidth() const;
  double contentX() const { return std::round(exactX_); }
  void setContentX(double x);
  double width() const { return width_; }
  void setWidth(double width);

  double duration() const { return duration_; }
  /// Seconds; what is no length counts as 0.
  void setDuration(double duration);

  double xOf(double time) const { return time * pxPerSec(); }
  double timeAt(double x) const { return x / pxPerSec(); }
  bool isSeen(double x) const { return contentX() <= x && x <= contentX() + width_; }
  /// What is seen, and a margin on either side for what reaches in from there.
  TimeRange range() const;

  /// Changes the scale; what lies at x stays where it is in the window.
  void setScale(double pxPerSec, double x);
  /// Changes the scale by a factor, within its bounds; the point `anchor` of the window stays at
  /// its time.
  Q_INVOKABLE void zoomBy(double factor, double anchor);
  Q_INVOKABLE void scrollBy(double points);
  /// A turn of the wheel or a stroke on the touchpad: scrolls along the lanes, whichever way it
  /// goes, or changes the scale about the pointer.
  /// @param pixels as far as the device tells, else null; @param angle in eighths of a degree.
  /// @param pointer its distance from the window's left edge.
  Q_INVOKABLE void wheel(QPoint pixels, QPoint angle, bool isZooming, double pointer);
  /// Scrolls no further than needed to see x.
  void reveal(double x);
  /// Scrolls so that x is seen and what follows it, or what precedes it when it lies to the left.
  void turnPage(double x);

 Q_SIGNALS:
  void scaleChanged();
  void contentWidthChanged();
  void contentXChanged();
  void widthChanged();
  /// What is seen is something else now.
  void rangeChanged();

 private:
  double bounded(double x, double pxPerSec) const;
  void takeScale();

  EditorUIState& ui_;
  double duration_ = 0;
  double exactX_ = 0;
  double width_ = 0;
};

}  // namespace vesk::editor
