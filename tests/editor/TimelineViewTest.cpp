#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QAbstractItemModelTester>
#include <QSignalSpy>
#include <fstream>
#include <limits>

#include "editor/EditorView.h"
#include "editor/SessionStage.h"
#include "editor/TimelineView.h"

namespace vesk::editor::test {
namespace {

using Kind = package::RecordedEvent::Kind;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Tester = QAbstractItemModelTester;

/// A recording of 20 s with clicks at 5, 11 and 16 (a double click), a manual mark at 18, and the
/// segments a (4 s to 8 s) and b (12 s to 14 s), at 20 points a second in a window of 300.
class TimelineViewTest : public SessionStage {
 protected:
  TimelineViewTest() : session_(makeSession()), editor_(*session_, ui_), view_(*session_, ui_) {
    ui_.setPxPerSec(20);
    view_.viewport()->setWidth(300);
    auto twice = clickAt(16);
    twice.clickCount = 2;
    open(20, {clickAt(5), clickAt(11), twice, markAt(18, Kind::zoomIn)},
         R"({"id":"a","start":4,"end":8},{"id":"b","start":12,"end":14,"level":2.5})");
  }

  void open(double duration, const std::vector<package::RecordedEvent>& events,
            const std::string& segments) {
    // Under a name of its own: the one that is left is saved.
    const auto take = putTake(fmt::format("录制 {}", ++takes_), events, duration);
    std::ofstream(take / "edit.json") << R"({"segments":[)" << segments << "]}";
    session_->open(take);
  }

  /// A whole gesture from a time of the lanes to another one.
  void drag(const QString& id, void (TimelineView::*begin)(const QString&, double), double from,
            double to, bool isFree = true) {
    (view_.*begin)(id, from * 20);
    view_.drag(id, to * 20, isFree);
    view_.endDrag(id);
  }

  const motion::ZoomSegment& segment(const std::string& id) const { return *session_->segment(id); }

  int takes_ = 0;
  std::unique_ptr<PreviewController> session_;
  EditorUIState ui_;
  EditorView editor_;
  TimelineView view_;
  Tester ticks_{view_.ticks(), Tester::FailureReportingMode::Fatal};
  Tester markers_{view_.markers(), Tester::FailureReportingMode::Fatal};
  Tester segments_{view_.segments(), Tester::FailureReportingMode::Fatal};
};

// What is seen.

TEST_F(TimelineViewTest, showsWhatIsInViewAndALittleBeyond) {
  EXPECT_THAT(view_.segments()->rows(), SizeIs(2));
  EXPECT_THAT(view_.markers()->rows(), SizeIs(4));
  EXPECT_THAT(view_.ticks()->rows(), SizeIs(5));
  view_.viewport()->setWidth(100);
  EXPECT_THAT(view_.segments()->rows(), SizeIs(1));
  EXPECT_THAT(view_.markers()->rows(), SizeIs(2));
  EXPECT_THAT(view_.ticks()->rows(), SizeIs(3));
  view_.viewport()->setContentX(300);
  ASSERT_THAT(view_.segments()->rows(), SizeIs(1));
  EXPECT_EQ(view_.segments()->rows()[0].id, "b");
}

TEST_F(TimelineViewTest, helpSaysWhatAMarkerIs) {
  const auto help = [&](int row) {
    return view_.markers()->data(view_.markers()->index(row), MarkerModel::helpRole).toString();
  };
  EXPECT_EQ(help(0), QStringLiteral("已挂效果 · 双击移除"));
  EXPECT_EQ(help(1), QStringLiteral("素材点 · 双击提升为效果"));
  EXPECT_EQ(help(3), QStringLiteral("手动放大标记"));
  open(20, {markAt(3, Kind::zoomOut)}, "");
  EXPECT_EQ(help(0), QStringLiteral("手动还原标记"));
}

TEST_F(TimelineViewTest, theHeaderTellsOfTheSelection) {
  EXPECT_FALSE(view_.hasSelection());
  EXPECT_EQ(view_.selectionText(), QString());
  const QSignalSpy changed(&view_, &TimelineView::selectionChanged);
  view_.select("b");
  EXPECT_GE(changed.count(), 1);
  EXPECT_TRUE(view_.hasSelection());
  EXPECT_EQ(view_.selectionText(), QStringLiteral("2.00s · 2.5×"));
  EXPECT_EQ(view_.selectionToggleText(), QStringLiteral("停用"));
  view_.toggleSegmentEnabled("b");
  EXPECT_EQ(view_.selectionToggleText(), QStringLiteral("启用"));
}

TEST_F(TimelineViewTest, aSelectionWhoseSegmentIsGoneIsNone) {
  view_.select("gone");
  EXPECT_FALSE(view_.hasSelection());
  EXPECT_EQ(view_.selectionText(), QString());
}

// The playhead.

TEST_F(TimelineViewTest, thePlayheadMovesWithoutAnythingElse) {
  std::vector<std::unique_ptr<QSignalSpy>> spies;
  for (QAbstractItemModel* model : std::initializer_list<QAbstractItemModel*>{
           view_.ticks(), view_.markers(), view_.segments()}) {
    spies.push_back(std::make_unique<QSignalSpy>(model, &QAbstractItemModel::dataChanged));
    spies.push_back(std::make_unique<QSignalSpy>(model, &QAbstractItemModel::rowsInserted));
    spies.push_back(std::make_unique<QSignalSpy>(model, &QAbstractItemModel::rowsRemoved));
    spies.push_back(std::make_unique<QSignalSpy>(model, &QAbstractItemModel::modelReset));
  }
  spies.push_back(std::make_unique<QSignalSpy>(view_.viewport(), &TimelineViewport::rangeChanged));
  spies.push_back(std::make_unique<QSignalSpy>(&view_, &TimelineView::selectionChanged));
  const QSignalSpy playhead(&view_, &TimelineView::playheadChanged);
  for (int frame = 1; frame <= 60; ++frame) session_->seek(frame / 60.0);
  EXPECT_EQ(playhead.count(), 60);
  EXPECT_EQ(view_.playheadX(), 20);
  EXPECT_EQ(view_.playheadText(), QStringLiteral("00:01.00"));
  for (const auto& spy : spies) EXPECT_EQ(spy->count(), 0);
}

TEST_F(TimelineViewTest, thePageTurnsWhenThePlayheadLeavesIt) {
  session_->seek(14.9);
  EXPECT_EQ(view_.viewport()->contentX(), 0);
  session_->seek(15.1);
  EXPECT_EQ(view_.viewport()->contentX(), 100);
}

TEST_F(TimelineViewTest, aPlayheadThatTheUserScrolledAwayFromIsLeftAlone) {
  view_.viewport()->setContentX(100);
  session_->seek(1);
  session_->seek(1.1);
  EXPECT_EQ(view_.viewport()->contentX(), 100);
}

TEST_F(TimelineViewTest, theRulerMovesThePlayhead) {
  view_.scrub(60);
  EXPECT_EQ(session_->currentTime(), 3);
  view_.scrub(-40);
  EXPECT_EQ(session_->currentTime(), 0);
  view_.scrub(5000);
  EXPECT_EQ(session_->currentTime(), 20);
  // The end is just seen, not a page turned.
  EXPECT_EQ(view_.viewport()->contentX(), 100);
  view_.scrub(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(session_->currentTime(), 20);
}

TEST_F(TimelineViewTest, zoomingKeepsThePlayheadInItsPlace) {
  session_->seek(10);
  const double before = view_.playheadX() - view_.viewport()->contentX();
  view_.zoomIn();
  EXPECT_EQ(ui_.pxPerSec(), 28);
  EXPECT_NEAR(view_.playheadX() - view_.viewport()->contentX(), before, 0.5);
  view_.zoomOut();
  EXPECT_DOUBLE_EQ(ui_.pxPerSec(), 20);
  view_.fit();
  EXPECT_DOUBLE_EQ(ui_.pxPerSec(), 41.2);
}

TEST_F(TimelineViewTest, zoomingStopsAtItsEnds) {
  for (int i = 0; i < 20; ++i) view_.zoomIn();
  EXPECT_EQ(ui_.pxPerSec(), 200);
  EXPECT_FALSE(view_.viewport()->canZoomIn());
  for (int i = 0; i < 20; ++i) view_.zoomOut();
  EXPECT_EQ(ui_.pxPerSec(), 4);
  EXPECT_FALSE(view_.viewport()->canZoomOut());
}

// The markers.

TEST_F(TimelineViewTest, aTapOnAMarkerSeeksToIt) {
  view_.seekToMarker(11);
  EXPECT_EQ(session_->currentTime(), 11);
}

TEST_F(TimelineViewTest, twoDoubleTapsOnAMarkerRemoveItsEffectAndMakeANewOne) {
  const auto isAttached = [&] { return view_.markers()->rows().at(0).isAttached; };
  EXPECT_TRUE(isAttached());
  view_.toggleEffect(5);
  EXPECT_EQ(session_->segment("a"), nullptr);
  EXPECT_FALSE(isAttached());
  view_.toggleEffect(5);
  EXPECT_EQ(times(*session_), "12.000-14.000 3.425-7.925");
  EXPECT_EQ(view_.selectedSegmentID(), "user_5000");
  EXPECT_TRUE(isAttached());
}

TEST_F(TimelineViewTest, theKeysGoFromMarkerToMarker) {
  session_->seek(10);
  EXPECT_EQ(view_.currentMarker(), -1);
  view_.seekToCurrentMarker();
  view_.toggleCurrentMarker();
  EXPECT_EQ(session_->currentTime(), 10);
  view_.stepMarker(1);
  EXPECT_EQ(view_.currentMarker(), 1);
  view_.seekToCurrentMarker();
  EXPECT_EQ(session_->currentTime(), 11);
  view_.stepMarker(1);
  view_.stepMarker(1);
  view_.stepMarker(1);
  EXPECT_EQ(view_.currentMarker(), 3);
  EXPECT_TRUE(view_.viewport()->isSeen(18 * 20));
  // A manual mark is no effect to be.
  view_.toggleCurrentMarker();
  EXPECT_EQ(times(*session_), "4.000-8.000 12.000-14.000");
  view_.stepMarker(-1);
  view_.toggleCurrentMarker();
  EXPECT_EQ(view_.selectedSegmentID(), "user_16000");
}

TEST_F(TimelineViewTest, aRecordingWithoutMarkersHasNoneToGoTo) {
  view_.stepMarker(1);
  open(20, {}, "");
  EXPECT_EQ(view_.currentMarker(), -1);
  view_.stepMarker(1);
  view_.stepSelection(1);
  EXPECT_EQ(view_.currentMarker(), -1);
  EXPECT_EQ(view_.selectedSegmentID(), "");
}

// The segments.

TEST_F(TimelineViewTest, theKeysGoFromSegmentToSegmentByTheirStarts) {
  open(20, {},
       R"({"id":"late","start":15,"end":18},{"id":"early","start":1,"end":3},)"
       R"({"id":"middle","start":6,"end":9})");
  session_->seek(4);
  view_.stepSelection(1);
  EXPECT_EQ(view_.selectedSegmentID(), "middle");
  view_.stepSelection(1);
  EXPECT_EQ(view_.selectedSegmentID(), "late");
  EXPECT_TRUE(view_.viewport()->isSeen(18 * 20));
  view_.stepSelection(1);
  EXPECT_EQ(view_.selectedSegmentID(), "late");
  view_.stepSelection(-2);
  EXPECT_EQ(view_.selectedSegmentID(), "early");
}

TEST_F(TimelineViewTest, aTapOnEmptySpaceAddsASegmentAndSelectsIt) {
  view_.addSegmentAt(200);
  EXPECT_EQ(view_.selectedSegmentID(), "");
  view_.addSegmentAt(17 * 20);
  EXPECT_EQ(view_.selectedSegmentID(), "user_17000");
  EXPECT_DOUBLE_EQ(segment("user_17000").start, 17 - 1.575);
  view_.addSegmentAt(std::numeric_limits<double>::quiet_NaN());
  EXPECT_THAT(session_->timeline().segments, SizeIs(3));
}

TEST_F(TimelineViewTest, aCopyIsSelectedAndAFailedOneLeavesTheSelection) {
  view_.select("a");
  view_.duplicateSegment("b");
  EXPECT_EQ(view_.selectedSegmentID(), "dup_1795000000123");
  open(20, {}, R"({"id":"a","start":4,"end":18})");
  view_.select("a");
  view_.duplicateSegment("a");
  EXPECT_EQ(view_.selectedSegmentID(), "a");
  EXPECT_THAT(session_->timeline().segments, SizeIs(1));
}

TEST_F(TimelineViewTest, deletingTheSelectedSegmentSelectsNone) {
  view_.select("a");
  view_.deleteSegment("a");
  EXPECT_EQ(view_.selectedSegmentID(), "");
  EXPECT_EQ(times(*session_), "12.000-14.000");
}

// The gestures.

TEST_F(TimelineViewTest, aShortWayIsNoDrag) {
  view_.beginMove("a", 100);
  view_.drag("a", 102.9, true);
  EXPECT_FALSE(view_.isDragging());
  view_.drag("a", 97, true);
  EXPECT_TRUE(view_.isDragging());
  EXPECT_DOUBLE_EQ(segment("a").start, 4 - 0.15);
  view_.endDrag("a");
  view_.beginTrimR("a", 100);
  view_.drag("a", 100.9, true);
  EXPECT_FALSE(view_.isDragging());
  view_.drag("a", 101, true);
  EXPECT_TRUE(view_.isDragging());
}

TEST_F(TimelineViewTest, aPressWithoutAWayChangesNothing) {
  view_.beginMove("a", 100);
  view_.endDrag("a");
  view_.drag("a", 300, true);
  EXPECT_EQ(times(*session_), "4.000-8.000 12.000-14.000");
  EXPECT_FALSE(session_->canUndo());
}

TEST_F(TimelineViewTest, aDragSelectsItsSegmentAndEndsAsOneStepToUndo) {
  view_.beginMove("a", 100);
  for (int x = 101; x <= 130; ++x) view_.drag("a", x, true);
  EXPECT_EQ(view_.selectedSegmentID(), "a");
  EXPECT_TRUE(view_.hasManualEdits());
  view_.endDrag("a");
  EXPECT_FALSE(view_.isDragging());
  EXPECT_EQ(times(*session_), "5.500-9.500 12.000-14.000");
  session_->undo();
  EXPECT_EQ(times(*session_), "4.000-8.000 12.000-14.000");
  EXPECT_FALSE(session_->canUndo());
}

TEST_F(TimelineViewTest, theCamerasPathFollowsAtTheEndOfADrag) {
  const auto before = session_->look().cameraTrack;
  view_.beginMove("a", 100);
  view_.drag("a", 140, true);
  EXPECT_EQ(session_->look().cameraTrack, before);
  view_.endDrag("a");
  EXPECT_NE(session_->look().cameraTrack, before);
}

TEST_F(TimelineViewTest, whileOneSegmentIsDraggedOthersAreNot) {
  view_.beginMove("a", 100);
  view_.drag("a", 120, true);
  view_.beginMove("b", 250);
  view_.drag("b", 300, true);
  view_.endDrag("b");
  EXPECT_TRUE(view_.isDragging());
  EXPECT_EQ(times(*session_), "5.000-9.000 12.000-14.000");
  view_.drag("a", 140, true);
  EXPECT_EQ(times(*session_), "6.000-10.000 12.000-14.000");
}

TEST_F(TimelineViewTest, edgesSnapUnlessTheyAreFree) {
  drag("a", &TimelineView::beginTrimR, 8, 10.8, false);
  EXPECT_EQ(segment("a").end, 11);
  drag("a", &TimelineView::beginTrimR, 11, 10.8, true);
  EXPECT_DOUBLE_EQ(segment("a").end, 10.8);
  drag("a", &TimelineView::beginTrimR, 10.8, 11.9, false);
  EXPECT_EQ(segment("a").end, 12);
}

TEST_F(TimelineViewTest, edgesSnapToThePlayheadAndToManualMarks) {
  session_->seek(9);
  drag("a", &TimelineView::beginTrimR, 8, 9.2, false);
  EXPECT_EQ(segment("a").end, 9);
  drag("b", &TimelineView::beginTrimR, 14, 17.7, false);
  EXPECT_EQ(segment("b").end, 18);
}

TEST_F(TimelineViewTest, theDragRemembersWhatItSnappedTo) {
  view_.beginTrimR("a", 160);
  view_.drag("a", 218, false);
  EXPECT_EQ(view_.dragState()->snapped, 11);
  view_.drag("a", 190, false);
  EXPECT_EQ(view_.dragState()->snapped, std::nullopt);
}

TEST_F(TimelineViewTest, aBubbleTellsOfTheTrimmedEdge) {
  view_.beginTrimL("a", 80);
  EXPECT_FALSE(view_.isHovering());
  view_.drag("a", 100, true);
  EXPECT_EQ(view_.hoverInfo(), (TimelineView::HoverInfo{5, "起点", 100}));
  EXPECT_EQ(view_.hoverText(), QStringLiteral("起点 00:05.00"));
  view_.endDrag("a");
  EXPECT_FALSE(view_.isHovering());
  view_.beginTrimR("a", 160);
  view_.drag("a", 200, true);
  EXPECT_EQ(view_.hoverInfo(), (TimelineView::HoverInfo{10, "终点", 200}));
  view_.endDrag("a");
  view_.beginMove("a", 160);
  view_.drag("a", 200, true);
  EXPECT_FALSE(view_.isHovering());
}

TEST_F(TimelineViewTest, aSegmentDraggedOutOfViewKeepsItsRow) {
  view_.viewport()->setWidth(100);
  view_.beginMove("a", 100);
  view_.drag("a", 110, true);
  view_.viewport()->setContentX(300);
  EXPECT_THAT(view_.segments()->rows(), SizeIs(2));
  view_.drag("a", 390, true);
  EXPECT_DOUBLE_EQ(segment("a").start, 16);
  view_.drag("a", 110, true);
  view_.viewport()->setContentX(300);
  view_.endDrag("a");
  ASSERT_THAT(view_.segments()->rows(), SizeIs(1));
  EXPECT_EQ(view_.segments()->rows()[0].id, "b");
}

TEST_F(TimelineViewTest, thePointerBeyondTheEdgeScrolls) {
  view_.beginMove("a", 100);
  view_.drag("a", 350, true);
  EXPECT_EQ(view_.viewport()->contentX(), 50);
  view_.drag("a", 5000, true);
  EXPECT_EQ(view_.viewport()->contentX(), 100);
}

TEST_F(TimelineViewTest, aDragOfWhatIsGoneOrNowhereChangesNothing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  view_.beginMove("gone", 100);
  view_.drag("gone", 200, true);
  view_.beginMove("a", nan);
  view_.drag("a", 200, true);
  view_.beginMove("a", 100);
  view_.drag("a", nan, true);
  EXPECT_FALSE(view_.isDragging());
  view_.drag("a", 200, true);
  view_.deleteSegment("a");
  view_.drag("a", 240, true);
  view_.endDrag("a");
  EXPECT_EQ(times(*session_), "12.000-14.000");
}

TEST_F(TimelineViewTest, anotherRecordingEndsADrag) {
  view_.beginTrimL("a", 100);
  view_.drag("a", 120, true);
  open(30, {}, R"({"id":"a","start":4,"end":8})");
  EXPECT_FALSE(view_.isDragging());
  EXPECT_FALSE(view_.isHovering());
  EXPECT_EQ(view_.viewport()->contentWidth(), 600);
  view_.drag("a", 160, true);
  EXPECT_EQ(times(*session_), "4.000-8.000");
  session_->unload();
  EXPECT_FALSE(view_.hasProject());
  EXPECT_THAT(view_.segments()->rows(), IsEmpty());
  EXPECT_THAT(view_.markers()->rows(), IsEmpty());
}

// A long take.

TEST_F(TimelineViewTest, ofAnHourOnlyWhatIsInViewIsListed) {
  std::vector<package::RecordedEvent> clicks;
  for (int i = 0; i < 2000; ++i) clicks.push_back(clickAt(i * 1.8));
  std::string segments;
  for (int i = 0; i < 300; ++i) {
    segments += fmt::format(R"({}{{"id":"s{}","start":{},"end":{}}})", i > 0 ? "," : "", i, i * 12,
                            i * 12 + 5);
  }
  open(3600, clicks, segments);
  view_.viewport()->setWidth(1000);
  ui_.setPxPerSec(200);
  const QSignalSpy reset(view_.markers(), &QAbstractItemModel::modelReset);
  std::size_t listed = view_.markers()->rows().size();
  QObject::connect(view_.markers(), &QAbstractItemModel::rowsInserted,
                   [&](const QModelIndex&, int first, int last) { listed += last - first + 1; });
  for (double x = 0; x < 720'000; x += 500) {
    view_.viewport()->setContentX(x);
    ASSERT_LE(view_.markers()->rows().size(), 4U);
    ASSERT_LE(view_.segments()->rows().size(), 2U);
    ASSERT_LE(view_.ticks()->rows().size(), 13U);
  }
  // Each came into view once.
  EXPECT_EQ(listed, 2000U);
  EXPECT_EQ(reset.count(), 0);
}

TEST_F(TimelineViewTest, aRecordingWithoutLengthHasATimeline) {
  open(0, {}, "");
  view_.zoomIn();
  view_.fit();
  view_.scrub(50);
  view_.addSegmentAt(10);
  EXPECT_EQ(session_->currentTime(), 0);
  EXPECT_EQ(view_.viewport()->contentWidth(), 0);
}

}  // namespace
}  // namespace vesk::editor::test
