// The menus: what they hold, and that a press which only closes one does nothing else.
#include <QColor>

#include "window/WindowStage.h"

namespace vesk::app::test {
namespace {

class MenusWindow : public WindowStage {
 protected:
  void openSegmentMenu() {
    hand().rightClick(place(QString::fromStdString("segment_" + segment(0).id)));
    ASSERT_TRUE(until([&] { return isShown("deleteSegmentItem"); }));
  }
  void openAppMenu() {
    hand().click(place("menuButton"));
    ASSERT_TRUE(until([&] { return isShown("undoMenuItem"); }));
  }
  void closeAppMenu() {
    hand().type(Key::escape);
    ASSERT_TRUE(until([&] { return !isShown("undoMenuItem"); }));
  }
  QString text(const QString& name) { return item(name).property("text").toString(); }
  QColor colour(const QString& name) { return item(name).property("textColor").value<QColor>(); }
  /// What can be undone and redone, as the buttons and the menu have it.
  void expectHistory(bool canUndo, bool canRedo) {
    EXPECT_EQ(item("undoButton").isEnabled(), canUndo);
    EXPECT_EQ(item("redoButton").isEnabled(), canRedo);
    ASSERT_NO_FATAL_FAILURE(openAppMenu());
    EXPECT_EQ(item("undoMenuItem").isEnabled(), canUndo);
    EXPECT_EQ(item("redoMenuItem").isEnabled(), canRedo);
    closeAppMenu();
  }
};

TEST_F(MenusWindow, theSegmentsMenuHasThreeEntriesAndTheLastIsTheOneToBewareOf) {
  open(putTour());
  openSegmentMenu();
  EXPECT_EQ(text("toggleSegmentItem"), QString("停用"));
  EXPECT_EQ(text("duplicateSegmentItem"), QString("复制"));
  EXPECT_EQ(text("deleteSegmentItem"), QString("删除"));
  const double first = place("toggleSegmentItem").y();
  const double second = place("duplicateSegmentItem").y();
  const double third = place("deleteSegmentItem").y();
  EXPECT_LT(first, second);
  EXPECT_LT(second, third);
  EXPECT_EQ(colour("toggleSegmentItem"), colour("duplicateSegmentItem"));
  const QColor destructive = colour("deleteSegmentItem");
  EXPECT_GT(destructive.red(), destructive.green() + 80);
  EXPECT_GT(destructive.red(), destructive.blue() + 80);
  hand().type(Key::escape);
  EXPECT_TRUE(until([&] { return !isShown("deleteSegmentItem"); }));
}

TEST_F(MenusWindow, aPressThatClosesTheSegmentsMenuDoesNothingBelow) {
  open(putTour());
  hand().click(place("segment_" + QString::fromStdString(segment(1).id)));
  hand().type(Key::forwardDelete);
  ASSERT_EQ(segments().size(), 1U);
  // Where the menu does not lie.
  const QPointF below[] = {place("segmentLane", {215, 17}), place("timelineRuler", {230, 10}),
                           place("marker_1")};
  for (const QPointF point : below) {
    ASSERT_NO_FATAL_FAILURE(openSegmentMenu());
    hand().click(point);
    EXPECT_TRUE(until([&] { return !isShown("deleteSegmentItem"); }));
    EXPECT_EQ(segments().size(), 1U);
    EXPECT_EQ(session().currentTime(), 0);
  }
  hand().click(below[1]);
  EXPECT_GT(session().currentTime(), 1) << "the next press is one like any other";
  hand().click(below[0]);
  EXPECT_EQ(segments().size(), 2U);
}

TEST_F(MenusWindow, aSecondClickOnItsButtonClosesTheMenu) {
  open(putTour());
  for (int time = 0; time < 2; ++time) {
    ASSERT_NO_FATAL_FAILURE(openAppMenu());
    hand().click(place("menuButton"));
    layOut();
    EXPECT_FALSE(isShown("undoMenuItem"));
  }
}

TEST_F(MenusWindow, whatCannotBeUndoneOrRedoneIsOff) {
  open(putTour());
  expectHistory(false, false);
  hand().click(place("segment_" + QString::fromStdString(segment(0).id)));
  hand().type(Key::forwardDelete);
  expectHistory(true, false);
  hand().click(place("undoButton"));
  expectHistory(false, true);

  openAppMenu();
  hand().click(place("redoMenuItem"));
  EXPECT_EQ(segments().size(), 1U);
  ASSERT_TRUE(until([&] { return !isShown("redoMenuItem"); }));
  expectHistory(true, false);
}

}  // namespace
}  // namespace vesk::app::test
