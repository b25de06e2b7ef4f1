#include <gtest/gtest.h>

#include "motion/SmartZoom.h"
#include "motion/TakeBuilder.h"

namespace vesk::motion {
namespace {

using test::appChange;
using test::click;
using test::take;
using test::zoomIn;
using test::zoomOut;

std::vector<ZoomSegment> standard(const package::RecordingProject& project) {
  return inferAutoSegments(project, Sensitivity::standard);
}

TEST(SmartZoom, noClicksGiveNoSegments) {
  EXPECT_TRUE(standard(take(20, {})).empty());
  EXPECT_TRUE(standard(take(20, {test::move(1, 0.5, 0.5), appChange(2)})).empty());
}

TEST(SmartZoom, oneClickGivesATwofoldZoomWithRoomForItsHold) {
  const auto segments = standard(take(20, {click(5, 0.25, 0.75)}));
  ASSERT_EQ(segments.size(), 1U);
  ZoomSegment expected;
  expected.id = "auto_0_5000";
  expected.start = 5.0 - 0.35;
  expected.end = expected.start + 0.5625 + 0.8 + 0.6875;
  expected.sourceClickTime = 5.0;
  expected.level = 2.0;
  expected.focus = {0.25F, 0.75F};
  expected.easeIn = 0.5625;
  expected.easeOut = 0.6875;
  EXPECT_EQ(segments.front(), expected);
  EXPECT_NEAR(segments.front().end, 6.70, 1e-12);
}

TEST(SmartZoom, aClickNearTheBeginningStartsAtZero) {
  const auto segments = standard(take(20, {click(0.2)}));
  ASSERT_EQ(segments.size(), 1U);
  EXPECT_EQ(segments.front().start, 0.0);
}

TEST(SmartZoom, theSecondHalfOfADoubleClickIsSkipped) {
  const auto segments = standard(take(20, {click(3.0, 0.2, 0.2), click(3.2, 0.9, 0.9)}));
  ASSERT_EQ(segments.size(), 1U);
  EXPECT_EQ(segments.front().focus, glm::vec2(0.2F, 0.2F));
  EXPECT_EQ(segments.front().level, 2.0);
}

TEST(SmartZoom, theBurstRuleOverridesAnApplicationSwitch) {
  EXPECT_EQ(standard(take(20, {click(3.0, 0.2, 0.2), click(3.2, 0.9, 0.9), appChange(3.3)}))
                .front()
                .focus,
            glm::vec2(0.2F, 0.2F));
}

TEST(SmartZoom, clicksExactlyTheClusterGapApartFormTwoGroups) {
  // 1.2 is not a binary number; its own distance from 0 is exactly it.
  const auto apart = standard(take(20, {click(0, 0.1, 0.5), click(1.2, 0.9, 0.5)}));
  ASSERT_EQ(apart.size(), 1U);  // two candidates that overlap and merge
  EXPECT_EQ(apart.front().focus, glm::vec2(0.5F, 0.5F));
  EXPECT_EQ(apart.front().level, 2.0);  // each group is a single spot

  const auto together = standard(take(20, {click(0, 0.1, 0.5), click(1.199, 0.9, 0.5)}));
  ASSERT_EQ(together.size(), 1U);
  EXPECT_EQ(together.front().level, 1.4);  // one group across the picture
}

TEST(SmartZoom, silenceDecidesByTheSensitivity) {
  const auto project = take(30, {click(1, 0.1, 0.1), click(1.9, 0.9, 0.9)});
  // Standard keeps both, 0.9 s apart, in one wide group; conservative only the first.
  EXPECT_EQ(standard(project).front().level, 1.4);
  const auto conservative = inferAutoSegments(project, Sensitivity::conservative);
  ASSERT_EQ(conservative.size(), 1U);
  EXPECT_EQ(conservative.front().level, 2.0);
  EXPECT_EQ(conservative.front().focus, glm::vec2(0.1F, 0.1F));
}

TEST(SmartZoom, aClickThatSwitchesTheApplicationCountsWithoutSilence) {
  const auto wide = [](double changeTime) {
    const auto segments =
        inferAutoSegments(take(30, {click(1, 0.1, 0.1), click(2, 0.9, 0.9), appChange(changeTime)}),
                          Sensitivity::conservative);
    return segments.size() == 1 && segments.front().level == 1.4;
  };
  EXPECT_TRUE(wide(2.0 - 0.05));
  EXPECT_TRUE(wide(2.3));
  EXPECT_TRUE(wide(2.0 + 0.6));
  EXPECT_FALSE(wide(2.0 - 0.0501));
  EXPECT_FALSE(wide(2.6001));
}

TEST(SmartZoom, theHeadOfABurstCountsWithoutSilence) {
  const auto project = take(30, {click(1, 0.1, 0.1), click(2, 0.9, 0.9), click(2.3, 0.9, 0.9)});
  EXPECT_EQ(inferAutoSegments(project, Sensitivity::conservative).front().level, 1.4);
}

TEST(SmartZoom, aCandidateIsCutAtTheEndAndDisappearsWhenTooShort) {
  const auto cut = standard(take(10, {click(9.5)}));
  ASSERT_EQ(cut.size(), 1U);
  EXPECT_EQ(cut.front().end, 10.0);
  EXPECT_EQ(standard(take(10, {click(9.96)})).size(), 1U);
  EXPECT_TRUE(standard(take(10, {click(10.06)})).empty());
  EXPECT_TRUE(standard(take(10, {click(12)})).empty());
}

TEST(SmartZoom, withoutADurationTheLastEventEndsTheTake) {
  auto project = take(0, {click(5), test::move(5.3, 0.5, 0.5)});
  project.meta.duration.reset();
  ASSERT_EQ(standard(project).size(), 1U);
  EXPECT_EQ(standard(project).front().end, 5.3);
}

TEST(SmartZoom, overlappingCandidatesBecomeOneWithTheEarlierIdentity) {
  const auto segments = standard(take(30, {click(5, 0.2, 0.2), click(6.5, 0.6, 0.4)}));
  ASSERT_EQ(segments.size(), 1U);
  EXPECT_EQ(segments.front().id, "auto_0_5000");
  EXPECT_EQ(segments.front().sourceClickTime, 5.0);
  EXPECT_EQ(segments.front().start, 5.0 - 0.35);
  EXPECT_NEAR(segments.front().end, 8.2, 1e-12);
  EXPECT_EQ(segments.front().focus, (glm::vec2(0.2F, 0.2F) + glm::vec2(0.6F, 0.4F)) * 0.5F);
}

TEST(SmartZoom, aMergeTakesTheWiderLevelAndItsEasings) {
  const auto segments =
      standard(take(30, {click(5, 0.1, 0.1), click(6, 0.4, 0.1), click(7.5, 0.6, 0.6)}));
  ASSERT_EQ(segments.size(), 1U);
  const double level = 0.55 / static_cast<double>(0.4F - 0.1F);
  EXPECT_EQ(segments.front().level, level);
  EXPECT_EQ(segments.front().easeIn, 0.45 * ((level - 1) * 0.25 + 1));
  EXPECT_EQ(segments.front().easeOut, 0.55 * ((level - 1) * 0.25 + 1));
}

TEST(SmartZoom, theLevelFitsTheBoxIntoTheViewportWithinLimits) {
  const auto levelOf = [](double width) {
    return standard(take(30, {click(5, 0.0, 0.5), click(6, width, 0.5)})).front().level;
  };
  EXPECT_EQ(levelOf(0), 2.0);
  EXPECT_EQ(levelOf(0.0499), 2.0);
  EXPECT_EQ(levelOf(0.05), 3.2);
  EXPECT_EQ(levelOf(0.25), 0.55 / 0.25);
  EXPECT_EQ(levelOf(1.0), 1.4);
}

TEST(SmartZoom, clicksWithoutAPositionTakeNoPartInTheBox) {
  auto lost = click(6, 0.9, 0.9);
  lost.y.reset();
  const auto segments = standard(take(30, {click(5, 0.3, 0.3), lost}));
  ASSERT_EQ(segments.size(), 1U);
  EXPECT_EQ(segments.front().focus, glm::vec2(0.3F, 0.3F));
  EXPECT_NEAR(segments.front().end, 6 + 0.8 + 0.6875, 1e-12);  // it still is the group's last click
}

TEST(SmartZoom, aGroupWithoutPositionsUsesUpItsNumber) {
  auto lost = click(5);
  lost.x.reset();
  const auto segments = standard(take(30, {lost, click(15)}));
  ASSERT_EQ(segments.size(), 1U);
  EXPECT_EQ(segments.front().id, "auto_1_15000");
}

TEST(SmartZoom, idsTruncateMillisecondsAndSurviveAnyTime) {
  EXPECT_EQ(standard(take(30, {click(1.2349)})).front().id, "auto_0_1234");
  EXPECT_TRUE(standard(take(30, {click(1e300)})).empty());
  const auto late = standard(take(1e15, {click(1e13)}));
  ASSERT_EQ(late.size(), 1U);
  EXPECT_EQ(late.front().id, "auto_0_10000000000000000");
}

TEST(SmartZoom, senselessPositionsStayFinite) {
  const auto segments = standard(take(30, {click(5, 1e300, -1e300), click(6, -1e300, 1e300)}));
  ASSERT_EQ(segments.size(), 1U);
  EXPECT_EQ(segments.front().level, 1.4);
  EXPECT_EQ(segments.front().focus, glm::vec2(0.0F, 0.0F));
}

TEST(SmartZoom, withoutAutoDetectionOnlyMarksCount) {
  EXPECT_TRUE(combinedSegments(take(30, {click(5)}), Sensitivity::standard, false).empty());
  const auto marked = take(30, {click(5), zoomIn(10), zoomOut(13)});
  const auto segments = combinedSegments(marked, Sensitivity::standard, false);
  ASSERT_EQ(segments.size(), 1U);
  EXPECT_TRUE(segments.front().isManual);
}

TEST(SmartZoom, aManualSegmentWinsWholeOverAnOverlappingAutomaticOne) {
  const auto segments = combinedSegments(take(30, {click(5), click(20), zoomIn(6), zoomOut(9)}),
                                         Sensitivity::standard, true);
  ASSERT_EQ(segments.size(), 2U);
  EXPECT_EQ(segments[0].id, "man_6000");
  EXPECT_EQ(segments[1].id, "auto_1_20000");
}

TEST(SmartZoom, segmentsThatTouchBothStayInTimeOrder) {
  // The mark's segment ends at 4.45 + 0.55, where the click's begins.
  const double clickTime = 4.45 + 0.55 + 0.35;
  const auto project = take(30, {zoomIn(2.15), zoomOut(4.45), click(clickTime)});
  const auto automatic = inferAutoSegments(project, Sensitivity::standard);
  ASSERT_EQ(automatic.size(), 1U);
  ASSERT_EQ(automatic.front().start, 4.45 + 0.55);
  const auto segments = combinedSegments(project, Sensitivity::standard, true);
  ASSERT_EQ(segments.size(), 2U);
  EXPECT_TRUE(segments[0].isManual);
  EXPECT_EQ(segments[0].end, segments[1].start);
}

TEST(SmartZoom, withoutMarksTheAutomaticSegmentsStandAlone) {
  const auto project = take(30, {click(5), click(20)});
  EXPECT_EQ(combinedSegments(project, Sensitivity::dense, true),
            inferAutoSegments(project, Sensitivity::dense));
}

}  // namespace
}  // namespace vesk::motion
