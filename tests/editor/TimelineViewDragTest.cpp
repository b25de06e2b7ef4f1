#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <algorithm>
#include <limits>

#include "editor/TimelineStage.h"

namespace vesk::editor::test {
namespace {

using testing::IsEmpty;
using testing::SizeIs;

class TimelineViewDragTest : public TimelineStage {
 protected:
  /// A whole gesture from a time of the lanes to another one.
  void drag(const QString& id, void (TimelineView::*begin)(const QString&, double), double from,
            double to, bool isFree = true) {
    (view_.*begin)(id, from * 20);
    view_.drag(id, to * 20, isFree);
    view_.endDrag(id);
  }
};

TEST_F(TimelineViewDragTest, aShortWayIsNoDrag) {
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

TEST_F(TimelineViewDragTest, aPressWithoutAWayChangesNothing) {
  view_.beginMove("a", 100);
  view_.endDrag("a");
  view_.drag("a", 300, true);
  EXPECT_EQ(times(*session_), "4.000-8.000 12.000-14.000");
  EXPECT_FALSE(session_->canUndo());
}

TEST_F(TimelineViewDragTest, aDragSelectsItsSegmentAndEndsAsOneStepToUndo) {
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

TEST_F(TimelineViewDragTest, theCamerasPathFollowsAtTheEndOfADrag) {
  const auto before = session_->look().cameraTrack;
  view_.beginMove("a", 100);
  view_.drag("a", 140, true);
  EXPECT_EQ(session_->look().cameraTrack, before);
  view_.endDrag("a");
  EXPECT_NE(session_->look().cameraTrack, before);
}

TEST_F(TimelineViewDragTest, whileOneSegmentIsDraggedOthersAreNot) {
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

TEST_F(TimelineViewDragTest, edgesSnapUnlessTheyAreFree) {
  drag("a", &TimelineView::beginTrimR, 8, 10.8, false);
  EXPECT_EQ(segment("a").end, 11);
  drag("a", &TimelineView::beginTrimR, 11, 10.8, true);
  EXPECT_DOUBLE_EQ(segment("a").end, 10.8);
  drag("a", &TimelineView::beginTrimR, 10.8, 11.9, false);
  EXPECT_EQ(segment("a").end, 12);
}

TEST_F(TimelineViewDragTest, aFreeEdgeComesWithinAPointOfItsNeighbour) {
  drag("a", &TimelineView::beginTrimR, 8, 11.95, true);
  EXPECT_DOUBLE_EQ(segment("a").end, 11.95);
}

TEST_F(TimelineViewDragTest, segmentsMayComeToOverlap) {
  drag("a", &TimelineView::beginMove, 5, 14);
  EXPECT_EQ(times(*session_), "13.000-17.000 12.000-14.000");
}

TEST_F(TimelineViewDragTest, edgesSnapToThePlayheadAndToManualMarks) {
  session_->seek(9);
  drag("a", &TimelineView::beginTrimR, 8, 9.2, false);
  EXPECT_EQ(segment("a").end, 9);
  drag("b", &TimelineView::beginTrimR, 14, 17.7, false);
  EXPECT_EQ(segment("b").end, 18);
}

TEST_F(TimelineViewDragTest, theDragRemembersWhatItSnappedTo) {
  view_.beginTrimR("a", 160);
  view_.drag("a", 218, false);
  EXPECT_EQ(view_.dragState()->snapped, 11);
  view_.drag("a", 190, false);
  EXPECT_EQ(view_.dragState()->snapped, std::nullopt);
}

TEST_F(TimelineViewDragTest, aBubbleTellsOfTheTrimmedEdge) {
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

TEST_F(TimelineViewDragTest, aSegmentDraggedOutOfViewKeepsItsRow) {
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

TEST_F(TimelineViewDragTest, thePointerBeyondTheEdgeScrolls) {
  view_.beginMove("a", 100);
  view_.drag("a", 350, true);
  EXPECT_EQ(view_.viewport()->contentX(), 50);
  view_.drag("a", 5000, true);
  EXPECT_EQ(view_.viewport()->contentX(), 100);
}

TEST_F(TimelineViewDragTest, aDragOfWhatIsGoneOrNowhereChangesNothing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  view_.beginMove("gone", 100);
  view_.drag("gone", 200, true);
  view_.beginMove("a", nan);
  view_.drag("a", 200, true);
  view_.beginMove("a", 100);
  view_.drag("a", nan, true);
  EXPECT_FALSE(view_.isDragging());
  EXPECT_EQ(times(*session_), "4.000-8.000 12.000-14.000");
}

// Its block goes with it and tells of no end to the gesture.
TEST_F(TimelineViewDragTest, aDragEndsWithItsSegment) {
  view_.beginTrimR("a", 160);
  view_.drag("a", 180, true);
  const QSignalSpy changed(&view_, &TimelineView::dragChanged);
  view_.deleteSegment("a");
  EXPECT_EQ(changed.count(), 1);
  EXPECT_FALSE(view_.isDragging());
  EXPECT_FALSE(view_.isHovering());
  view_.drag("a", 240, true);
  EXPECT_EQ(times(*session_), "12.000-14.000");
  drag("b", &TimelineView::beginMove, 13, 14);
  EXPECT_EQ(times(*session_), "13.000-15.000");
}

TEST_F(TimelineViewDragTest, undoingWhatMadeADraggedSegmentEndsTheDrag) {
  view_.addSegmentAt(17 * 20);
  view_.beginMove("user_17000", 340);
  view_.drag("user_17000", 330, true);
  ASSERT_TRUE(view_.isDragging());
  while (session_->segment("user_17000") != nullptr) {
    ASSERT_TRUE(session_->canUndo());
    session_->undo();
  }
  EXPECT_FALSE(view_.isDragging());
  // Pages turn again.
  session_->seek(16.4);
  ASSERT_LT(view_.viewport()->contentX(), 100);
  session_->seek(16.6);
  EXPECT_EQ(view_.viewport()->contentX(), 100);
}

TEST_F(TimelineViewDragTest, aSegmentThatGoesAndComesBackIsPressedNoMore) {
  view_.beginMove("a", 100);
  view_.deleteSegment("a");
  session_->undo();
  view_.drag("a", 140, true);
  EXPECT_FALSE(view_.isDragging());
  EXPECT_EQ(times(*session_), "4.000-8.000 12.000-14.000");
}

TEST_F(TimelineViewDragTest, aDragGoesOnWhenAnotherSegmentGoes) {
  view_.beginMove("b", 250);
  view_.drag("b", 270, true);
  view_.deleteSegment("a");
  view_.drag("b", 290, true);
  EXPECT_TRUE(view_.isDragging());
  EXPECT_EQ(times(*session_), "14.000-16.000");
}

TEST_F(TimelineViewDragTest, segmentsInAnotherOrderKeepTheirRows) {
  const QSignalSpy reset(view_.segments(), &QAbstractItemModel::modelReset);
  const QSignalSpy removed(view_.segments(), &QAbstractItemModel::rowsRemoved);
  view_.beginMove("a", 100);
  view_.drag("a", 120, true);
  auto document = session_->snapshot();
  std::ranges::reverse(document.segments.value());
  session_->apply(document);
  ASSERT_EQ(times(*session_), "12.000-14.000 5.000-9.000");
  EXPECT_EQ(view_.segments()->rows().at(1).id, "a");
  EXPECT_EQ(reset.count(), 0);
  EXPECT_EQ(removed.count(), 0);
  view_.drag("a", 140, true);
  EXPECT_EQ(times(*session_), "12.000-14.000 6.000-10.000");
}

TEST_F(TimelineViewDragTest, aPressedSegmentStaysUnderThePointer) {
  view_.beginMove("a", 100);
  session_->seek(14.9);
  session_->seek(15.1);
  EXPECT_EQ(view_.viewport()->contentX(), 0);
  view_.viewport()->setWidth(100);
  view_.viewport()->setContentX(300);
  EXPECT_THAT(view_.segments()->rows(), SizeIs(2));
  view_.endDrag("a");
  EXPECT_THAT(view_.segments()->rows(), SizeIs(1));
}

TEST_F(TimelineViewDragTest, zoomingAboutAStillPointerLeavesTheDraggedEdge) {
  view_.beginTrimR("a", 160);
  view_.drag("a", 200, true);
  ASSERT_EQ(segment("a").end, 10);
  const double pointer = 200 - view_.viewport()->contentX();
  view_.viewport()->wheel({}, {0, 120}, true, pointer);
  ASSERT_EQ(ui_.pxPerSec(), 28);
  EXPECT_EQ(view_.hoverX(), 280);
  const double x = view_.viewport()->contentX() + pointer;
  view_.drag("a", x, true);
  EXPECT_DOUBLE_EQ(segment("a").end, 10);
  view_.drag("a", x + 28, true);
  EXPECT_DOUBLE_EQ(segment("a").end, 11);
}

TEST_F(TimelineViewDragTest, zoomingBetweenAPressAndItsDragMovesNothing) {
  view_.beginMove("a", 100);
  view_.zoomIn();
  view_.drag("a", 142, true);
  EXPECT_FALSE(view_.isDragging());
  view_.drag("a", 145, true);
  EXPECT_DOUBLE_EQ(segment("a").start, 4 + 5.0 / 28);
}

TEST_F(TimelineViewDragTest, anotherRecordingEndsADrag) {
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

}  // namespace
}  // namespace vesk::editor::test
