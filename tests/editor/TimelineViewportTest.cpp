#include <gtest/gtest.h>

#include <QSignalSpy>
#include <limits>

#include "editor/TimelineViewport.h"

namespace vesk::editor {
namespace {

class TimelineViewportTest : public testing::Test {
 protected:
  TimelineViewportTest() {
    viewport_.setDuration(100);
    viewport_.setWidth(500);
  }

  EditorUIState ui_;
  TimelineViewport viewport_{ui_};
};

TEST_F(TimelineViewportTest, scrollsAsFarAsTheLanesReach) {
  EXPECT_EQ(viewport_.contentWidth(), 2400);
  viewport_.setContentX(-5);
  EXPECT_EQ(viewport_.contentX(), 0);
  viewport_.scrollBy(5000);
  EXPECT_EQ(viewport_.contentX(), 1900);
}

TEST_F(TimelineViewportTest, scrollsByWholePoints) {
  viewport_.setContentX(10.4);
  EXPECT_EQ(viewport_.contentX(), 10);
}

TEST_F(TimelineViewportTest, smallStepsAddUpAlikeInBothDirections) {
  const QSignalSpy moved(&viewport_, &TimelineViewport::contentXChanged);
  for (int step = 0; step < 20; ++step) viewport_.wheel({}, {0, -1}, false, 0);
  EXPECT_EQ(viewport_.contentX(), 10);
  EXPECT_EQ(moved.count(), 10);
  for (int step = 0; step < 20; ++step) viewport_.wheel({}, {0, 1}, false, 0);
  EXPECT_EQ(viewport_.contentX(), 0);
}

TEST_F(TimelineViewportTest, stepsBeyondAnEndAreNotKept) {
  viewport_.scrollBy(-0.4);
  viewport_.scrollBy(0.5);
  EXPECT_EQ(viewport_.contentX(), 1);
}

TEST_F(TimelineViewportTest, smallChangesOfTheScaleAddUpToNoShift) {
  viewport_.setContentX(480);
  const double time = viewport_.timeAt(480 + 137);
  for (int step = 0; step < 200; ++step) viewport_.zoomBy(1.004, 137);
  EXPECT_NEAR(viewport_.xOf(time), viewport_.contentX() + 137, 0.51);
}

TEST_F(TimelineViewportTest, aWiderWindowOrAShorterRecordingScrollsBack) {
  viewport_.setContentX(1900);
  viewport_.setWidth(1000);
  EXPECT_EQ(viewport_.contentX(), 1400);
  viewport_.setDuration(50);
  EXPECT_EQ(viewport_.contentX(), 200);
  viewport_.setDuration(10);
  EXPECT_EQ(viewport_.contentX(), 0);
}

TEST_F(TimelineViewportTest, zoomingKeepsTheTimeUnderThePointer) {
  viewport_.setContentX(480);
  const double time = viewport_.timeAt(480 + 100);
  viewport_.zoomBy(2, 100);
  EXPECT_EQ(viewport_.pxPerSec(), 48);
  EXPECT_NEAR(viewport_.timeAt(viewport_.contentX() + 100), time, 0.5 / 48);
}

TEST_F(TimelineViewportTest, zoomingTellsOfWhatIsSeenOnce) {
  const QSignalSpy range(&viewport_, &TimelineViewport::rangeChanged);
  viewport_.setContentX(480);
  viewport_.zoomBy(2, 100);
  EXPECT_EQ(range.count(), 2);
}

TEST_F(TimelineViewportTest, zoomsWithinItsBounds) {
  viewport_.zoomBy(1000, 0);
  EXPECT_EQ(viewport_.pxPerSec(), 200);
  EXPECT_FALSE(viewport_.canZoomIn());
  EXPECT_TRUE(viewport_.canZoomOut());
  viewport_.zoomBy(1e-6, 0);
  EXPECT_EQ(viewport_.pxPerSec(), 4);
  EXPECT_TRUE(viewport_.canZoomIn());
  EXPECT_FALSE(viewport_.canZoomOut());
}

TEST_F(TimelineViewportTest, theWheelDoesNotShrinkWhatIsFittedBeyondTheMost) {
  viewport_.setScale(412, 0);
  viewport_.zoomBy(1.2, 0);
  EXPECT_EQ(viewport_.pxPerSec(), 412);
}

TEST_F(TimelineViewportTest, theWheelScrollsAlongTheLanesWhicheverWayItTurns) {
  viewport_.wheel({}, {0, -120}, false, 0);
  EXPECT_EQ(viewport_.contentX(), 60);
  viewport_.wheel({}, {120, 30}, false, 0);
  EXPECT_EQ(viewport_.contentX(), 0);
  viewport_.wheel({-35, 4}, {-280, 32}, false, 0);
  EXPECT_EQ(viewport_.contentX(), 35);
}

TEST_F(TimelineViewportTest, theWheelZoomsAboutThePointer) {
  viewport_.wheel({}, {0, 120}, true, 250);
  EXPECT_DOUBLE_EQ(viewport_.pxPerSec(), 24 * 1.4);
  EXPECT_EQ(viewport_.contentX(), 100);
  viewport_.wheel({0, -10}, {0, -120}, true, 250);
  EXPECT_DOUBLE_EQ(viewport_.pxPerSec(), 24);
  EXPECT_EQ(viewport_.contentX(), 0);
}

TEST_F(TimelineViewportTest, revealsByNoMoreThanNeeded) {
  viewport_.setContentX(400);
  viewport_.reveal(600);
  EXPECT_EQ(viewport_.contentX(), 400);
  viewport_.reveal(950);
  EXPECT_EQ(viewport_.contentX(), 450);
  viewport_.reveal(50);
  EXPECT_EQ(viewport_.contentX(), 50);
}

TEST_F(TimelineViewportTest, turnsThePageInTheDirectionOfWhatIsSought) {
  viewport_.setContentX(400);
  viewport_.turnPage(1000);
  EXPECT_EQ(viewport_.contentX(), 950);
  viewport_.turnPage(900);
  EXPECT_EQ(viewport_.contentX(), 450);
}

TEST_F(TimelineViewportTest, whatIsNoNumberChangesNothing) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  viewport_.setContentX(480);
  viewport_.setContentX(nan);
  viewport_.setWidth(nan);
  viewport_.scrollBy(nan);
  viewport_.reveal(nan);
  viewport_.turnPage(nan);
  viewport_.setScale(nan, 0);
  viewport_.setScale(0, 0);
  viewport_.zoomBy(nan, 0);
  viewport_.zoomBy(2, nan);
  EXPECT_EQ(viewport_.contentX(), 480);
  EXPECT_EQ(viewport_.width(), 500);
  EXPECT_EQ(viewport_.pxPerSec(), 24);
}

TEST_F(TimelineViewportTest, aRecordingHasALengthWhateverItSays) {
  viewport_.setDuration(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(viewport_.contentWidth(), 0);
  viewport_.setDuration(1e300);
  viewport_.setContentX(1e300);
  EXPECT_TRUE(std::isfinite(viewport_.contentX()));
  EXPECT_LT(viewport_.contentX(), viewport_.contentWidth());
}

TEST_F(TimelineViewportTest, anHourAtTheLargestScaleIsReachedToItsEnd) {
  viewport_.setDuration(3600);
  viewport_.setScale(200, 0);
  EXPECT_EQ(viewport_.contentWidth(), 720000);
  viewport_.setContentX(1e9);
  EXPECT_EQ(viewport_.contentX(), 719500);
  EXPECT_GE(viewport_.range().to, 3600);
}

}  // namespace
}  // namespace vesk::editor
