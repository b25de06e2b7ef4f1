#pragma once

#include <QtQml/qqml.h>
#include <QtQml/qqmlregistration.h>

#include <QObject>

#include "editor/MarkerModel.h"
#include "editor/SegmentModel.h"
#include "editor/TickModel.h"
#include "editor/TimelineLayout.h"
#include "editor/TimelineView.h"
#include "editor/TimelineViewport.h"

// The timeline's objects as types that QML can name; whoever starts the window makes the view.
namespace vesk::editor {

/// The measures of the timeline, in points.
class TimelineLayout : public QObject {
  Q_OBJECT
  QML_ELEMENT
  QML_SINGLETON
  Q_PROPERTY(double headWidth MEMBER headWidth CONSTANT)
  Q_PROPERTY(double rulerH MEMBER rulerH CONSTANT)
  Q_PROPERTY(double markerH MEMBER markerH CONSTANT)
  Q_PROPERTY(double videoH MEMBER videoH CONSTANT)
  Q_PROPERTY(double zoomH MEMBER zoomH CONSTANT)
  Q_PROPERTY(double handleVisual MEMBER handleVisual CONSTANT)
  Q_PROPERTY(double handleHit MEMBER handleHit CONSTANT)

 public:
  using QObject::QObject;

  const double headWidth = timeline::headWidth;
  const double rulerH = timeline::rulerH;
  const double markerH = timeline::markerH;
  const double videoH = timeline::videoH;
  const double zoomH = timeline::zoomH;
  const double handleVisual = timeline::handleVisual;
  const double handleHit = timeline::handleHit;
};

struct TimelineViewType {
  Q_GADGET
  QML_FOREIGN(vesk::editor::TimelineView)
  QML_NAMED_ELEMENT(TimelineView)
  QML_UNCREATABLE("made by the application")
};

struct TimelineViewportType {
  Q_GADGET
  QML_FOREIGN(vesk::editor::TimelineViewport)
  QML_NAMED_ELEMENT(TimelineViewport)
  QML_UNCREATABLE("part of a TimelineView")
};

struct TickModelType {
  Q_GADGET
  QML_FOREIGN(vesk::editor::TickModel)
  QML_NAMED_ELEMENT(TickModel)
  QML_UNCREATABLE("part of a TimelineView")
};

struct MarkerModelType {
  Q_GADGET
  QML_FOREIGN(vesk::editor::MarkerModel)
  QML_NAMED_ELEMENT(MarkerModel)
  QML_UNCREATABLE("part of a TimelineView")
};

struct SegmentModelType {
  Q_GADGET
  QML_FOREIGN(vesk::editor::SegmentModel)
  QML_NAMED_ELEMENT(SegmentModel)
  QML_UNCREATABLE("part of a TimelineView")
};

}  // namespace vesk::editor
