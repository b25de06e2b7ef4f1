// The timeline under the pointer.
#include "window/WindowStage.h"

namespace vesk::app::test {
namespace {

using motion::ZoomSegment;

class SegmentsWindow : public WindowStage {
 protected:
  static constexpr double zoomOutMark = 6.117750978469848;  ///< of the tour, as are all below
  static constexpr double firstClick = 1.5393587112426754;

  QString block(std::size_t number) {
    return QString::fromStdString("segment_" + segment(number).id);
  }
  QString endHandle(std::size_t number) {
    return QString::fromStdString("trimEnd_" + segment(number).id);
  }
  QString startHandle(std::size_t number) {
    return QString::fromStdString("trimStart_" + segment(number).id);
  }
  double seconds(double points) { return points / timeline().viewport()->pxPerSec(); }

  /// Drags what is named so many points to the right.
  void dragBy(const QString& name, double points) {
    const QPointF from = place(name);
    hand().drag(from, from + QPointF(points, 0));
  }
  /// The same, and Alt is held once the button is.
  void dragFreelyBy(const QString& name, double points) {
    const QPointF from = place(name);
    hand().press(from);
    hand().holdAlt();
    hand().dragTo(from + QPointF(points, 0));
    hand().release();
    hand().releaseAlt();
  }
  void expectOneStepBackTo(const std::vector<ZoomSegment>& before) {
    ASSERT_TRUE(session().canUndo());
    hand().click(place("undoButton"));
    EXPECT_EQ(segments(), before);
    EXPECT_FALSE(session().canUndo());
  }
  /// That another segment can be taken hold of.
  void expectOneCanBeMoved(std::size_t number) {
    EXPECT_FALSE(timeline().isDragging());
    const ZoomSegment before = segment(number);
    dragFreelyBy(block(number), 10);
    EXPECT_NEAR(segment(number).start, before.start + seconds(10), exact);
    EXPECT_NEAR(segment(number).end, before.end + seconds(10), exact);
    EXPECT_FALSE(timeline().isDragging());
  }
  void choose(const QString& entry, std::size_t number) {
    hand().rightClick(place(block(number)));
    ASSERT_TRUE(until([&] { return isShown(entry); }));
    hand().click(place(entry));
    ASSERT_TRUE(until([&] { return !isShown(entry); }));
  }
};

TEST_F(SegmentsWindow, aDragOnTheBodyMovesASegmentAndItsStartSnaps) {
  open(putTour());
  const auto before = segments();
  dragBy(block(1), -14);
  const ZoomSegment moved = segment(1);
  EXPECT_EQ(moved.start, before[0].end);
  EXPECT_NEAR(moved.end - moved.start, before[1].end - before[1].start, exact);
  EXPECT_EQ(selected(), moved.id);
  EXPECT_TRUE(isShown("manualEditsText"));
  expectOneStepBackTo(before);
}

TEST_F(SegmentsWindow, aDragWithAltMovesByWhatThePointerDoes) {
  open(putTour());
  const auto before = segments();
  dragFreelyBy(block(1), -14);
  EXPECT_NEAR(segment(1).start, before[1].start - seconds(14), exact);
  expectOneStepBackTo(before);
}

TEST_F(SegmentsWindow, aSegmentStaysWithinTheRecording) {
  open(putTour());
  const auto before = segments();
  dragBy(block(1), 300);
  EXPECT_EQ(segment(1).end, session().duration());
  EXPECT_NEAR(segment(1).end - segment(1).start, before[1].end - before[1].start, exact);
}

TEST_F(SegmentsWindow, aTrimmedEndSnapsToAMark) {
  open(putTour());
  const auto before = segments();
  dragBy(endHandle(0), -10);
  EXPECT_EQ(segment(0).end, zoomOutMark);
  EXPECT_EQ(segment(0).start, before[0].start);
  expectOneStepBackTo(before);
}

TEST_F(SegmentsWindow, aTrimmedEndSnapsToTheNeighbour) {
  open(putTour());
  const auto before = segments();
  dragBy(endHandle(0), 12);
  EXPECT_EQ(segment(0).end, before[1].start);
}

TEST_F(SegmentsWindow, aTrimWithAltSnapsNowhere) {
  open(putTour());
  const auto before = segments();
  dragFreelyBy(endHandle(0), -10);
  EXPECT_NEAR(segment(0).end, before[0].end - seconds(10), exact);
  EXPECT_GT(std::abs(segment(0).end - zoomOutMark), 0.05);
}

TEST_F(SegmentsWindow, aTrimmedStartKeepsTheEndAndTheLeastLength) {
  open(putTour());
  const auto before = segments();
  dragFreelyBy(startHandle(0), 20);
  EXPECT_NEAR(segment(0).start, before[0].start + seconds(20), exact);
  EXPECT_EQ(segment(0).end, before[0].end);
  dragBy(startHandle(0), 400);
  EXPECT_NEAR(segment(0).start, before[0].end - seconds(24), exact);
}

TEST_F(SegmentsWindow, aBubbleTellsWhereATrimmedEdgeLies) {
  open(putTour());
  const QPointF from = place(endHandle(0));
  hand().press(from);
  EXPECT_FALSE(isShown("trimBubble"));
  hand().dragTo(from - QPointF(10, 0));
  EXPECT_TRUE(isShown("trimBubble"));
  EXPECT_EQ(item("trimBubble").property("text").toString(), QString("终点 00:06.12"));
  hand().release();
  EXPECT_FALSE(isShown("trimBubble"));
}

TEST_F(SegmentsWindow, aSegmentDeletedWhileItIsHeldIsLetGoOf) {
  open(putTour());
  const QPointF from = place(block(1));
  hand().press(from);
  hand().dragTo(from - QPointF(14, 0));
  ASSERT_TRUE(timeline().isDragging());
  hand().type(Key::forwardDelete);
  ASSERT_EQ(segments().size(), 1U);
  hand().dragTo(from + QPointF(4, 0));
  hand().release();
  EXPECT_EQ(segments().size(), 1U);
  EXPECT_EQ(selected(), "");
  expectOneCanBeMoved(0);
}

TEST_F(SegmentsWindow, aDragUndoneWhileItGoesOnIsOver) {
  open(putTour());
  const auto before = segments();
  const QPointF from = place(block(0));
  hand().press(from);
  hand().dragTo(from + QPointF(14, 0));
  ASSERT_NE(segments(), before);
  hand().type(Key::z, capture::controlModifier);
  EXPECT_EQ(segments(), before);
  hand().release();
  EXPECT_EQ(segments(), before);
  expectOneCanBeMoved(0);
}

TEST_F(SegmentsWindow, aClickOnASegmentSelectsItWhereverItIsHit) {
  open(putTour());
  for (const std::size_t number : {1U, 0U}) {
    for (const QString& part : {startHandle(number), block(number), endHandle(number)}) {
      timeline().select({});
      hand().click(place(part));
      EXPECT_EQ(selected(), segment(number).id) << part.toStdString();
    }
  }
  EXPECT_FALSE(session().canUndo());
}

TEST_F(SegmentsWindow, aSelectedSegmentIsDeletedByEitherKeyAndOneIsAddedByM) {
  open(putTour());
  for (const Key key : {Key::forwardDelete, Key::backspace}) {
    hand().click(place(block(1)));
    ASSERT_EQ(selected(), segment(1).id);
    hand().type(key);
    ASSERT_EQ(segments().size(), 1U);
    EXPECT_EQ(selected(), "");

    hand().click(place("timelineRuler", {200, 10}));
    const double time = seconds(200);
    ASSERT_NEAR(session().currentTime(), time, exact);
    hand().type(Key::m);
    ASSERT_EQ(segments().size(), 2U);
    EXPECT_EQ(selected(), segment(1).id);
    EXPECT_NEAR(segment(1).start, time - 1.575, exact);
    EXPECT_EQ(segment(1).end, session().duration());
    EXPECT_TRUE(segment(1).isManual);
  }
  hand().type(Key::m);
  EXPECT_EQ(segments().size(), 2U) << "where there is one already, none is added";
}

TEST_F(SegmentsWindow, aClickOnTheEmptyLaneAddsASegment) {
  open(putTour());
  hand().click(place(block(1)));
  hand().type(Key::forwardDelete);
  hand().click(place("segmentLane", {200, 17}));
  ASSERT_EQ(segments().size(), 2U);
  EXPECT_NEAR(segment(1).start, seconds(200) - 1.575, exact);
  EXPECT_EQ(selected(), segment(1).id);
}

TEST_F(SegmentsWindow, aDragAlongTheEmptyLaneAddsNothing) {
  open(putTour());
  for (int count = 0; count < 2; ++count) {
    hand().click(place(block(0)));
    hand().type(Key::forwardDelete);
  }
  ASSERT_EQ(segments().size(), 0U);
  hand().click(place("fitButton"));
  const QPointF from = place("segmentLane", {200, 17});
  hand().drag(from, from + QPointF(300, 0));
  hand().drag(from, from + QPointF(20, 0));
  EXPECT_EQ(segments().size(), 0U);
  hand().click(from);
  EXPECT_EQ(segments().size(), 1U);
}

TEST_F(SegmentsWindow, theMenuSwitchesASegmentOffAndOn) {
  open(putTour());
  choose("toggleSegmentItem", 0);
  EXPECT_FALSE(segment(0).enabled);
  hand().rightClick(place(block(0)));
  ASSERT_TRUE(until([&] { return isShown("toggleSegmentItem"); }));
  EXPECT_EQ(item("toggleSegmentItem").property("text").toString(), QString("启用"));
  hand().click(place("toggleSegmentItem"));
  EXPECT_TRUE(segment(0).enabled);
}

TEST_F(SegmentsWindow, theMenuDuplicatesASegmentAndDeletesIt) {
  open(putMarks());
  const ZoomSegment original = segment(0);
  choose("duplicateSegmentItem", 0);
  ASSERT_EQ(segments().size(), 3U);
  EXPECT_NEAR(segment(1).start, original.end + 0.1, exact);
  EXPECT_EQ(selected(), segment(1).id);
  choose("deleteSegmentItem", 0);
  ASSERT_EQ(segments().size(), 2U);
  EXPECT_NE(segment(0).id, original.id);
}

TEST_F(SegmentsWindow, theButtonsOfTheHeaderWorkOnTheSelection) {
  open(putTour());
  hand().click(place(block(0)));
  EXPECT_EQ(item("selectionText").property("text").toString(), QString("6.19s · 2.0×"));
  hand().click(place("toggleSelectedButton"));
  EXPECT_FALSE(segment(0).enabled);
  hand().click(place("deleteSelectedButton"));
  EXPECT_EQ(segments().size(), 1U);
  EXPECT_FALSE(isShown("selectionText"));
}

TEST_F(SegmentsWindow, aDoubleClickOnAClickRemovesItsEffectAndMakesOne) {
  open(putTour());
  hand().doubleClick(place("marker_1"));
  ASSERT_EQ(segments().size(), 1U);
  EXPECT_GT(segment(0).start, 7);
  hand().doubleClick(place("marker_1"));
  ASSERT_EQ(segments().size(), 2U);
  EXPECT_EQ(segment(0).id, "user_1539");
  EXPECT_EQ(segment(0).start, 0);
  EXPECT_EQ(segment(0).end, 4.5);
}

TEST_F(SegmentsWindow, aClickOnAMarkerSeeksThere) {
  open(putTour());
  hand().click(place("marker_1"));
  EXPECT_EQ(session().currentTime(), firstClick);
  hand().click(place("marker_3"));
  EXPECT_EQ(session().currentTime(), zoomOutMark);
  EXPECT_FALSE(session().canUndo());
}

TEST_F(SegmentsWindow, aDoubleClickOnAMarkChangesNothing) {
  open(putTour());
  const auto before = segments();
  hand().doubleClick(place("marker_3"));
  EXPECT_EQ(session().currentTime(), zoomOutMark);
  EXPECT_EQ(segments(), before);
  EXPECT_FALSE(session().canUndo());
}

TEST_F(SegmentsWindow, theButtonsChangeTheScale) {
  open(putTour());
  const auto scale = [&] { return timeline().viewport()->pxPerSec(); };
  hand().click(place("zoomInButton"));
  EXPECT_NEAR(scale(), 24 * 1.4, exact);
  hand().click(place("zoomOutButton"));
  EXPECT_NEAR(scale(), 24, exact);
  hand().click(place("fitButton"));
  EXPECT_NEAR(scale(), (900.0 - 76) / session().duration(), exact);
}

}  // namespace
}  // namespace vesk::app::test
