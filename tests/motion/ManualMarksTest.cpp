#include <gtest/gtest.h>

#include <cmath>
#include <string>

#include "motion/ManualMarks.h"
#include "motion/TakeBuilder.h"

namespace vesk::motion {
namespace {

using test::take;
using test::zoomIn;
using test::zoomOut;

struct Expected {
  double start;
  double end;
  glm::vec2 focus;
  std::vector<ZoomSegment::Waypoint> waypoints;
};

struct PairingCase {
  std::string name;
  std::vector<package::RecordedEvent> marks;
  std::vector<Expected> segments;
};

class ManualMarksPairing : public testing::TestWithParam<PairingCase> {};

TEST_P(ManualMarksPairing, givesTheSegmentsExpected) {
  const auto segments = pairManualMarks(take(12, GetParam().marks));
  const auto& expected = GetParam().segments;
  ASSERT_EQ(segments.size(), expected.size());
  for (std::size_t i = 0; i < segments.size(); ++i) {
    EXPECT_NEAR(segments[i].start, expected[i].start, 1e-9);
    EXPECT_NEAR(segments[i].end, expected[i].end, 1e-9);
    EXPECT_EQ(segments[i].focus, expected[i].focus);
    EXPECT_EQ(segments[i].waypoints, expected[i].waypoints);
    if (i > 0) {
      EXPECT_LE(segments[i - 1].end, segments[i].start);
    }
  }
}

INSTANTIATE_TEST_SUITE_P(
    AllHabits, ManualMarksPairing,
    testing::Values(
        PairingCase{
            "pairs", {zoomIn(2, 0.3, 0.3), zoomOut(6, 0.3, 0.3)}, {{1.85, 6.55, {0.3F, 0.3F}, {}}}},
        PairingCase{"aSecondZoomInPans",
                    {zoomIn(2, 0.2, 0.2), zoomIn(5, 0.8, 0.7), zoomOut(8, 0.8, 0.7)},
                    {{1.85, 8.55, {0.2F, 0.2F}, {{.t = 5.0, .focus = {0.8F, 0.7F}}}}}},
        PairingCase{"aChangeOfMindOnTheWayReplacesTheFocus",
                    {zoomIn(2, 0.2, 0.2), zoomIn(2.2, 0.8, 0.7), zoomOut(6, 0.8, 0.7)},
                    {{1.85, 6.55, {0.8F, 0.7F}, {}}}},
        PairingCase{"aForgottenResetHoldsToTheEnd", {zoomIn(3)}, {{2.85, 12, {0.5F, 0.5F}, {}}}},
        PairingCase{"anOrphanedResetIsIgnored",
                    {zoomOut(1), zoomIn(4, 0.6, 0.4), zoomOut(7, 0.6, 0.4)},
                    {{3.85, 7.55, {0.6F, 0.4F}, {}}}},
        PairingCase{"zoomingInSoonAfterAResetDoesNotOverlap",
                    {zoomIn(2, 0.2, 0.2), zoomOut(2.5, 0.2, 0.2), zoomIn(3, 0.7, 0.7)},
                    {{1.85, 2.85, {0.2F, 0.2F}, {}}, {2.85, 12, {0.7F, 0.7F}, {}}}},
        PairingCase{"segmentsBornOverlappingAreCut",
                    {zoomIn(2, 0.2, 0.2), zoomOut(2.5, 0.2, 0.2), zoomIn(2.6, 0.7, 0.7)},
                    {{1.85, 2.45, {0.2F, 0.2F}, {}}, {2.45, 12, {0.7F, 0.7F}, {}}}},
        PairingCase{"twoPairsGiveTwoSegments",
                    {zoomIn(1.5, 0.2, 0.2), zoomOut(4, 0.2, 0.2), zoomIn(7, 0.7, 0.7),
                     zoomOut(10, 0.7, 0.7)},
                    {{1.35, 4.55, {0.2F, 0.2F}, {}}, {6.85, 10.55, {0.7F, 0.7F}, {}}}}),
    [](const auto& pairing) { return pairing.param.name; });

TEST(ManualMarks, noMarksGiveNoSegments) {
  EXPECT_TRUE(pairManualMarks(take(12, {})).empty());
  EXPECT_TRUE(pairManualMarks(take(12, {test::click(3)})).empty());
}

TEST(ManualMarks, aSegmentCarriesItsOriginAndDefaults) {
  const auto segments = pairManualMarks(take(12, {zoomIn(2.0006, 0.3, 0.4), zoomOut(6)}));
  ASSERT_EQ(segments.size(), 1U);
  ZoomSegment expected;
  expected.id = "man_2000";
  expected.start = 2.0006 - 0.15;
  expected.end = 6 + 0.55;
  expected.sourceClickTime = 2.0006;
  expected.level = 2.0;
  expected.focus = {0.3F, 0.4F};
  expected.isManual = true;
  expected.endsWithExplicitReset = true;
  expected.easeIn = 0.45;
  expected.easeOut = 0.55;
  EXPECT_EQ(segments.front(), expected);
}

TEST(ManualMarks, aMarkNearTheBeginningStartsAtZero) {
  EXPECT_EQ(pairManualMarks(take(12, {zoomIn(0.05)})).front().start, 0.0);
}

TEST(ManualMarks, aMarkExactlyAtTheEndOfTheEaseInPans) {
  const double arrival = (2.0 - 0.15) + 0.45;
  const auto panned = pairManualMarks(take(12, {zoomIn(2), zoomIn(arrival, 0.9, 0.9)}));
  EXPECT_EQ(panned.front().waypoints.size(), 1U);
  const auto before = std::nextafter(arrival, 0.0);
  const auto redirected = pairManualMarks(take(12, {zoomIn(2), zoomIn(before, 0.9, 0.9)}));
  EXPECT_TRUE(redirected.front().waypoints.empty());
  EXPECT_EQ(redirected.front().focus, glm::vec2(0.9F, 0.9F));
}

TEST(ManualMarks, theLastWordOnTheEndIsTheResetOrTheTakesEnd) {
  // A pan pushes the provisional end out, but neither a reset nor a forgotten one heeds that.
  const auto forgotten = pairManualMarks(take(12, {zoomIn(2), zoomIn(3.1, 0.9, 0.9)}));
  EXPECT_EQ(forgotten.front().end, 12.0);
  const auto closed = pairManualMarks(take(12, {zoomIn(2), zoomIn(3.1, 0.9, 0.9), zoomOut(3.2)}));
  EXPECT_NEAR(closed.front().end, 3.75, 1e-12);
}

TEST(ManualMarks, aMissingCoordinateIsTheMiddleOfItsAxis) {
  auto mark = zoomIn(2, 0.2, 0.3);
  mark.x.reset();
  EXPECT_EQ(pairManualMarks(take(12, {mark})).front().focus, glm::vec2(0.5F, 0.3F));
  mark.y.reset();
  EXPECT_EQ(pairManualMarks(take(12, {mark})).front().focus, glm::vec2(0.5F, 0.5F));
}

TEST(ManualMarks, aHastyResetIsLengthenedIfThereIsRoom) {
  const auto segments = pairManualMarks(take(12, {zoomIn(2), zoomOut(2.1)}));
  ASSERT_EQ(segments.size(), 1U);
  EXPECT_NEAR(segments.front().end, 1.85 + 1.8, 1e-12);
}

TEST(ManualMarks, aHastyResetWithoutRoomDisappears) {
  const auto segments = pairManualMarks(take(12, {zoomIn(2), zoomOut(2.05), zoomIn(2.1)}));
  ASSERT_EQ(segments.size(), 1U);
  EXPECT_EQ(segments.front().id, "man_2100");
}

TEST(ManualMarks, aMarkNearTheEndIsCutAtTheEnd) {
  const auto segments = pairManualMarks(take(12, {zoomIn(11.9)}));
  ASSERT_EQ(segments.size(), 1U);
  EXPECT_EQ(segments.front().end, 12.0);
}

TEST(ManualMarks, marksBeyondTheEndGiveNothing) {
  EXPECT_TRUE(pairManualMarks(take(12, {zoomIn(20)})).empty());
  EXPECT_TRUE(pairManualMarks(take(12, {zoomIn(20), zoomOut(20.5)})).empty());
}

TEST(ManualMarks, senselessMarksStayFinite) {
  const auto segments = pairManualMarks(take(1e300, {zoomIn(1e15, 1e300, -1e300)}));
  ASSERT_EQ(segments.size(), 1U);
  EXPECT_EQ(segments.front().id, "man_1000000000000000000");
  EXPECT_TRUE(std::isfinite(segments.front().focus.x));
  EXPECT_TRUE(std::isfinite(segments.front().focus.y));
}

}  // namespace
}  // namespace vesk::motion
