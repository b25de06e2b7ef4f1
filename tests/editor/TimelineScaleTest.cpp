#include <gtest/gtest.h>

#include <limits>

#include "editor/TimelineScale.h"

namespace vesk::editor {
namespace {

constexpr double nan = std::numeric_limits<double>::quiet_NaN();

TEST(TimelineScale, zoomsByAFactor) {
  EXPECT_DOUBLE_EQ(zoomedIn(24), 33.6);
  EXPECT_DOUBLE_EQ(zoomedOut(33.6), 24);
}

TEST(TimelineScale, stopsAtItsEnds) {
  EXPECT_EQ(zoomedIn(150), 200);
  EXPECT_EQ(zoomedIn(200), 200);
  EXPECT_EQ(zoomedOut(5), 4);
  EXPECT_EQ(zoomedOut(4), 4);
}

TEST(TimelineScale, fitsARecording) {
  EXPECT_DOUBLE_EQ(fittedScale(20, 24), 41.2);
  EXPECT_EQ(fittedScale(3600, 24), 4);
  EXPECT_EQ(fittedScale(2, 24), 412);
}

TEST(TimelineScale, aRecordingWithoutLengthLeavesTheScale) {
  EXPECT_EQ(fittedScale(0, 24), 24);
  EXPECT_EQ(fittedScale(-1, 24), 24);
  EXPECT_EQ(fittedScale(nan, 24), 24);
  EXPECT_EQ(fittedScale(std::numeric_limits<double>::infinity(), 24), 4);
}

TEST(TimelineScale, ticksStandAtLeastNinetyPointsApart) {
  EXPECT_EQ(tickInterval(200), 0.5);
  EXPECT_EQ(tickInterval(180), 0.5);
  EXPECT_EQ(tickInterval(179), 1);
  EXPECT_EQ(tickInterval(100), 1);
  EXPECT_EQ(tickInterval(24), 5);
  EXPECT_EQ(tickInterval(4), 30);
  EXPECT_EQ(tickInterval(0.3), 300);
  EXPECT_EQ(tickInterval(0.2), 600);
}

TEST(TimelineScale, tenthsComeAboveSixtyPoints) {
  EXPECT_TRUE(hasTenths(100));
  EXPECT_TRUE(hasTenths(60.1));
  EXPECT_FALSE(hasTenths(60));
}

TEST(TimelineScale, theShortestSegmentIsTheLongerOfTwentyFourPointsAndAThirdOfASecond) {
  EXPECT_DOUBLE_EQ(leastLength(20), 1.2);
  EXPECT_DOUBLE_EQ(leastLength(80), 0.3);
  EXPECT_DOUBLE_EQ(leastLength(200), 0.3);
}

}  // namespace
}  // namespace vesk::editor
