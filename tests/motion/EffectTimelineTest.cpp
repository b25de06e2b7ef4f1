#include <gtest/gtest.h>

#include "motion/EffectTimeline.h"

namespace vesk::motion {
namespace {

ZoomSegment span(double start, double end, bool enabled = true) {
  ZoomSegment segment;
  segment.start = start;
  segment.end = end;
  segment.enabled = enabled;
  return segment;
}

TEST(Sensitivity, rawValuesReadBackAndNothingElseDoes) {
  for (const Sensitivity level : allSensitivities) {
    EXPECT_EQ(sensitivity(rawValue(level)), level);
  }
  EXPECT_EQ(rawValue(Sensitivity::conservative), "保守");
  EXPECT_EQ(rawValue(Sensitivity::standard), "标准");
  EXPECT_EQ(rawValue(Sensitivity::dense), "密集");
  EXPECT_EQ(sensitivity("standard"), std::nullopt);
}

TEST(Sensitivity, aReadierLevelWaitsLess) {
  EXPECT_EQ(silenceThreshold(Sensitivity::conservative), 1.5);
  EXPECT_EQ(silenceThreshold(Sensitivity::standard), 0.8);
  EXPECT_EQ(silenceThreshold(Sensitivity::dense), 0.4);
  EXPECT_EQ(clusterGap(Sensitivity::conservative), 2.0);
  EXPECT_EQ(clusterGap(Sensitivity::standard), 1.2);
  EXPECT_EQ(clusterGap(Sensitivity::dense), 0.6);
}

TEST(EffectTimeline, startsAtTheStandardLevelAndNotTooDense) {
  const EffectTimeline timeline;
  EXPECT_EQ(timeline.sensitivity, Sensitivity::standard);
  EXPECT_FALSE(timeline.isTooDense);
  EXPECT_TRUE(timeline.segments.empty());
}

TEST(EffectTimeline, coverageIsTheShareOfEnabledSegments) {
  EffectTimeline timeline;
  timeline.segments = {span(0, 2), span(3, 4), span(5, 9, false)};
  EXPECT_DOUBLE_EQ(timeline.coverage(10), 0.3);
  EXPECT_DOUBLE_EQ(coverage(timeline.segments, 10), 0.3);
}

TEST(EffectTimeline, coverageCountsOverlapsTwiceButNeverExceedsOne) {
  EXPECT_DOUBLE_EQ(coverage({span(0, 2), span(1, 3)}, 10), 0.4);
  EXPECT_EQ(coverage({span(0, 8), span(1, 9)}, 10), 1.0);
}

TEST(EffectTimeline, coverageIsZeroWithoutEnabledSegmentsOrDuration) {
  EXPECT_EQ(coverage({}, 10), 0.0);
  EXPECT_EQ(coverage({span(0, 8, false)}, 10), 0.0);
  EXPECT_EQ(coverage({span(0, 8)}, 0), 0.0);
  EXPECT_EQ(coverage({span(0, 8)}, -1), 0.0);
}

}  // namespace
}  // namespace vesk::motion
