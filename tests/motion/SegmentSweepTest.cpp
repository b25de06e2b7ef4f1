#include <gtest/gtest.h>

#include <string>

#include "motion/SegmentSweep.h"

namespace vesk::motion {
namespace {

ZoomSegment span(const std::string& id, double start, double end) {
  ZoomSegment segment;
  segment.id = id;
  segment.start = start;
  segment.end = end;
  return segment;
}

/// The ids at 0, 0.5, 1, …, "-" where nothing applies.
std::string walk(const std::vector<ZoomSegment>& segments, double until) {
  SegmentSweep sweep(segments);
  std::string ids;
  for (double t = 0; t <= until; t += 0.5) {
    const auto effect = sweep.advance(t);
    ids += effect ? effect->segment->id : "-";
  }
  return ids;
}

TEST(SegmentSweep, nothingAppliesWithoutSegmentsOrBetweenThem) {
  EXPECT_EQ(walk({}, 1), "---");
  EXPECT_EQ(walk({span("a", 0.5, 1), span("b", 2, 2.5)}, 3), "-aa-bb-");
}

TEST(SegmentSweep, ofOverlappingSegmentsTheFirstInOrderApplies) {
  EXPECT_EQ(walk({span("a", 0, 1), span("b", 0.5, 2)}, 2.5), "aaabb-");
}

TEST(SegmentSweep, aNestedSegmentNeverApplies) {
  EXPECT_EQ(walk({span("a", 0, 2), span("b", 0.5, 1), span("c", 1.5, 3)}, 3), "aaaaacc");
}

TEST(SegmentSweep, bothEndsBelongToASegment) {
  const std::vector<ZoomSegment> segments{span("a", 1, 2), span("b", 2, 3)};
  SegmentSweep sweep(segments);
  EXPECT_FALSE(sweep.advance(0.999));
  EXPECT_EQ(sweep.advance(1)->segment->id, "a");
  EXPECT_EQ(sweep.advance(2)->segment->id, "a");
  EXPECT_EQ(sweep.advance(2.001)->segment->id, "b");
  EXPECT_EQ(sweep.advance(3)->segment->id, "b");
  EXPECT_FALSE(sweep.advance(3.001));
}

TEST(WaypointSweep, aPanCountsFromItsTimeUntilItHasArrived) {
  ZoomSegment segment = span("a", 0, 10);
  segment.panDuration = 0.5;
  segment.waypoints = {{.t = 1, .focus = {}}, {.t = 2, .focus = {}}};
  WaypointSweep sweep(segment);
  EXPECT_EQ(sweep.advance(0.99), std::nullopt);
  EXPECT_EQ(sweep.advance(1), 0U);
  EXPECT_EQ(sweep.advance(1.49), 0U);
  EXPECT_EQ(sweep.advance(1.5), std::nullopt);
  EXPECT_EQ(sweep.advance(2.2), 1U);
  EXPECT_EQ(sweep.advance(9), std::nullopt);
}

TEST(WaypointSweep, ofOverlappingPansTheOneListedFirstCounts) {
  ZoomSegment segment = span("a", 0, 10);
  segment.panDuration = 1;
  segment.waypoints = {{.t = 2, .focus = {}}, {.t = 1.5, .focus = {}}, {.t = 2.75, .focus = {}}};
  WaypointSweep sweep(segment);
  EXPECT_EQ(sweep.advance(1.75), 1U);
  EXPECT_EQ(sweep.advance(2.25), 0U);
  EXPECT_EQ(sweep.advance(2.875), 0U);
  EXPECT_EQ(sweep.advance(3), 2U);
}

TEST(WaypointSweep, aPanWithoutDurationNeverCounts) {
  ZoomSegment segment = span("a", 0, 10);
  segment.panDuration = 0;
  segment.waypoints = {{.t = 1, .focus = {}}};
  WaypointSweep sweep(segment);
  EXPECT_EQ(sweep.advance(1), std::nullopt);
  segment.panDuration = -1;
  EXPECT_EQ(WaypointSweep(segment).advance(1), std::nullopt);
}

}  // namespace
}  // namespace vesk::motion
