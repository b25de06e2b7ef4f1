#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <vector>

#include "editor/SegmentEditing.h"

namespace vesk::editor {
namespace {

using motion::ZoomSegment;

ZoomSegment segment(double start, double end) {
  ZoomSegment made;
  made.id = "s";
  made.start = start;
  made.end = end;
  return made;
}

std::optional<ZoomSegment> added(double time, double duration,
                                 const std::vector<ZoomSegment>& existing = {}) {
  return newSegment(existing, time, {0.25F, 0.75F}, duration);
}

TEST(NewSegment, isFourAndAHalfSecondsWithTheTimeAtAThirdOfIt) {
  const auto made = added(5, 20);
  EXPECT_DOUBLE_EQ(made->start, 5 - 1.575);
  EXPECT_DOUBLE_EQ(made->end, 5 - 1.575 + 4.5);
}

TEST(NewSegment, isTheUsersOwnWithTheDefaultsOfItsKind) {
  const auto made = added(5.0019, 20);
  ZoomSegment expected;
  expected.id = "user_5001";
  expected.start = made->start;
  expected.end = made->end;
  expected.focus = {0.25F, 0.75F};
  expected.isManual = true;
  EXPECT_EQ(*made, expected);
  EXPECT_EQ(made->level, 2.0);
  EXPECT_EQ(made->easeIn, 0.45);
  EXPECT_EQ(made->easeOut, 0.55);
}

TEST(NewSegment, atTheBeginningStartsThere) {
  const auto made = added(0, 20);
  EXPECT_EQ(made->start, 0);
  EXPECT_EQ(made->end, 4.5);
}

TEST(NewSegment, shortBeforeTheEndStopsThere) {
  const auto made = added(19.8, 20);
  EXPECT_DOUBLE_EQ(made->start, 19.8 - 1.575);
  EXPECT_EQ(made->end, 20);
}

TEST(NewSegment, beyondTheEndIsASecondLong) {
  const auto made = added(21.5, 20);
  EXPECT_EQ(made->start, 19);
  EXPECT_EQ(made->end, 20);
}

TEST(NewSegment, inAShortRecordingFillsIt) {
  const auto made = added(0.2, 0.5);
  EXPECT_EQ(made->start, 0);
  EXPECT_EQ(made->end, 0.5);
}

TEST(NewSegment, isNotMadeOverAnother) {
  EXPECT_FALSE(added(5, 20, {segment(4, 6)}));
  EXPECT_FALSE(added(5, 20, {segment(7.9, 9)}));
  EXPECT_FALSE(added(5, 20, {segment(0, 3.5)}));
}

TEST(NewSegment, mayTouchAnother) {
  EXPECT_TRUE(added(5, 20, {segment(0, 5 - 1.575)}));
  EXPECT_TRUE(added(5, 20, {segment(5 - 1.575 + 4.5, 12)}));
}

TEST(NewSegment, isNotMadeWhereThereIsNoTime) {
  EXPECT_FALSE(added(0, 0));
  EXPECT_FALSE(added(std::numeric_limits<double>::quiet_NaN(), 20));
  EXPECT_FALSE(added(1, std::numeric_limits<double>::quiet_NaN()));
}

TEST(DuplicateOf, followsTheOriginalAndKeepsItsLook) {
  const ZoomSegment original{.id = "s",
                             .start = 2,
                             .end = 5,
                             .enabled = false,
                             .sourceClickTime = 3,
                             .level = 3,
                             .focus = {0.2F, 0.8F},
                             .followCursor = false,
                             .deadzone = 0.4,
                             .followSpeed = 0.6,
                             .isManual = false,
                             .endsWithExplicitReset = true,
                             .easeIn = 0.3,
                             .easeOut = 0.7,
                             .holdMin = 0.9,
                             .motionBlur = 0.1,
                             .waypoints = {{.t = 3, .focus = {0.1F, 0.2F}}},
                             .panDuration = 0.6};
  ZoomSegment expected = original;
  expected.id = "dup_1795000000123";
  expected.start = 5 + 0.1;
  expected.end = 5 + 0.1 + 3;
  expected.isManual = true;
  expected.endsWithExplicitReset = false;
  expected.sourceClickTime.reset();
  expected.waypoints.clear();
  EXPECT_EQ(duplicateOf(original, 20, 1'795'000'000'123), expected);
}

TEST(DuplicateOf, mustEndWithinTheRecording) {
  EXPECT_TRUE(duplicateOf(segment(2, 5), 8.1, 1));
  EXPECT_FALSE(duplicateOf(segment(2, 5), 8.0, 1));
}

TEST(SegmentAt, isTheFirstThatHoldsTheTimeItsEndsIncluded) {
  std::vector<ZoomSegment> segments{segment(2, 5), segment(4, 8)};
  segments[1].id = "second";
  EXPECT_EQ(segmentAt(segments, 2)->id, "s");
  EXPECT_EQ(segmentAt(segments, 5)->id, "s");
  EXPECT_EQ(segmentAt(segments, 5.001)->id, "second");
  EXPECT_EQ(segmentAt(segments, 8.001), nullptr);
  EXPECT_EQ(segmentAt({}, 1), nullptr);
}

}  // namespace
}  // namespace vesk::editor
