#pragma once

#include <QObject>
#include <QString>
#include <optional>
#include <string>
#include <vector>

#include "editor/EditorUIState.h"
#include "editor/MarkerModel.h"
#include "editor/PreviewController.h"
#include "editor/SegmentDrag.h"
#include "editor/SegmentModel.h"
#include "editor/TickModel.h"
#include "editor/TimelineSnap.h"
#include "editor/TimelineViewport.h"

namespace vesk::editor {

/// The timeline below the preview: what its lanes show and what the user does there. x is in points
/// from the start of the lanes, times in seconds. Main thread.
class TimelineView : public QObject {
  Q_OBJECT
  Q_PROPERTY(vesk::editor::TimelineViewport* viewport READ viewport CONSTANT)
  Q_PROPERTY(vesk::editor::TickModel* ticks READ ticks CONSTANT)
  Q_PROPERTY(vesk::editor::MarkerModel* markers READ markers CONSTANT)
  Q_PROPERTY(vesk::editor::SegmentModel* segments READ segments CONSTANT)

  Q_PROPERTY(bool hasProject READ hasProject NOTIFY projectChanged)
  Q_PROPERTY(QString title READ title NOTIFY projectChanged)
  Q_PROPERTY(bool hasManualEdits READ hasManualEdits NOTIFY hasManualEditsChanged)

  Q_PROPERTY(double playheadX READ playheadX NOTIFY playheadChanged)
  Q_PROPERTY(QString playheadText READ playheadText NOTIFY playheadChanged)

  /// The selected segment; empty without one. All that concerns it changes with `selectionChanged`.
  Q_PROPERTY(QString selectedSegmentID READ selectedSegmentID NOTIFY selectionChanged)
  Q_PROPERTY(bool hasSelection READ hasSelection NOTIFY selectionChanged)
  Q_PROPERTY(QString selectionText READ selectionText NOTIFY selectionChanged)
  Q_PROPERTY(QString selectionToggleText READ selectionToggleText NOTIFY selectionChanged)

  Q_PROPERTY(bool isDragging READ isDragging NOTIFY dragChanged)
  Q_PROPERTY(bool isHovering READ isHovering NOTIFY hoverInfoChanged)
  Q_PROPERTY(double hoverX READ hoverX NOTIFY hoverInfoChanged)
  Q_PROPERTY(QString hoverText READ hoverText NOTIFY hoverInfoChanged)

  /// The marker that the keys work on, as numbered by MarkerModel; -1 for none.
  Q_PROPERTY(qlonglong currentMarker READ currentMarker NOTIFY currentMarkerChanged)

 public:
  /// What the bubble shows while an edge is trimmed.
  struct HoverInfo {
    double time = 0;
    std::string label;
    double x = 0;
    bool operator==(const HoverInfo&) const = default;
  };

  /// Both outlive the view.
  TimelineView(PreviewController& preview, EditorUIState& ui, QObject* parent = nullptr);

  TimelineViewport* viewport() { return &viewport_; }
  TickModel* ticks() { return &ticks_; }
  MarkerModel* markers() { return &markers_; }
  SegmentModel* segments() { return &segments_; }

  bool hasProject() const { return preview_.hasProject(); }
  QString title() const { return preview_.title(); }
  bool hasManualEdits() const { return preview_.hasManualEdits(); }

  double playheadX() const { return viewport_.xOf(preview_.currentTime()); }
  QString playheadText() const;

  // The scale. The playhead stays where it is while it is seen, else the middle.

  Q_INVOKABLE void zoomIn();
  Q_INVOKABLE void zoomOut();
  Q_INVOKABLE void fit();

  // The playhead.

  /// Moves the playhead to x, as the pointer presses on the ruler or is dragged along it.
  Q_INVOKABLE void scrub(double x);

  // The markers.

  Q_INVOKABLE void seekToMarker(double time);
  /// Makes a click's marker an effect, or removes the effect that holds it.
  Q_INVOKABLE void toggleEffect(double time);
  qlonglong currentMarker() const { return currentMarker_; }
  /// Goes on by so many markers; from none, the one at the playhead or the next one.
  Q_INVOKABLE void stepMarker(int count);
  Q_INVOKABLE void seekToCurrentMarker();
  Q_INVOKABLE void toggleCurrentMarker();

  // The segments.

  QString selectedSegmentID() const { return ui_.selectedSegmentID(); }
  bool hasSelection() const { return selection() != nullptr; }
  /// Length and level of the selected segment.
  QString selectionText() const;
  QString selectionToggleText() const;
  Q_INVOKABLE void select(const QString& id);
  /// Selects the segment that stands so many further, in the order of their starts.
  Q_INVOKABLE void stepSelection(int count);
  /// Adds a segment around x and selects it.
  Q_INVOKABLE void addSegmentAt(double x);
  Q_INVOKABLE void toggleSegmentEnabled(const QString& id);
  Q_INVOKABLE void duplicateSegment(const QString& id);
  Q_INVOKABLE void deleteSegment(const QString& id);

  // A gesture on a segment: it begins with the pointer's press and is a drag once the pointer has
  // gone far enough. While one goes on, those of other segments are ignored. It ends with its
  // segment, if that goes.

  Q_INVOKABLE void beginMove(const QString& id, double x);
  Q_INVOKABLE void beginTrimL(const QString& id, double x);
  Q_INVOKABLE void beginTrimR(const QString& id, double x);
  /// @param isFree whether the edge is to go where the pointer is and not to snap.
  Q_INVOKABLE void drag(const QString& id, double x, bool isFree);
  Q_INVOKABLE void endDrag(const QString& id);
  bool isDragging() const { return isDragging_; }
  std::optional<DragState> dragState() const { return isDragging_ ? gesture_ : std::nullopt; }

  const std::optional<HoverInfo>& hoverInfo() const { return hoverInfo_; }
  bool isHovering() const { return hoverInfo_.has_value(); }
  double hoverX() const { return hoverInfo_ ? hoverInfo_->x : 0; }
  QString hoverText() const;

 Q_SIGNALS:
  void projectChanged();
  void hasManualEditsChanged();
  void playheadChanged();
  void selectionChanged();
  void dragChanged();
  void hoverInfoChanged();
  void currentMarkerChanged();

 private:
  void takeProject();
  void takeTimeline();
  void takeScale();
  void updateRows();
  void updateMarkers();
  void updateSegments();
  void followPlayhead();
  double zoomCentre() const;
  const motion::ZoomSegment* selection() const;
  void selectAdded(const std::optional<std::string>& id);
  const TimelineMarker* marker() const;
  void setCurrentMarker(qlonglong number);
  void beginDrag(const QString& id, DragState::Mode mode, double x);
  bool startDrag(double x);
  void showTrimmedEdge(const DraggedTimes& times);
  void dropDrag();
  void rescaleDrag();
  void setHoverInfo(std::optional<HoverInfo> info);

  PreviewController& preview_;
  EditorUIState& ui_;
  TimelineViewport viewport_;
  TickModel ticks_;
  MarkerModel markers_;
  SegmentModel segments_;

  std::vector<TimelineMarker> allMarkers_;
  SnapMarks snapMarks_;
  qlonglong currentMarker_ = -1;
  bool playheadWasSeen_ = false;
  std::optional<DragState> gesture_;  ///< from the press on
  bool isDragging_ = false;           ///< the pointer has gone far enough
  std::optional<HoverInfo> hoverInfo_;
};

}  // namespace vesk::editor
