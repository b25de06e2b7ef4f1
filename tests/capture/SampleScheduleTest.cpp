#include <gtest/gtest.h>

#include "capture/SampleSchedule.h"

namespace vesk::capture {
namespace {

constexpr std::int64_t second = 1'000'000'000;

TEST(SampleSchedule, theFirstSampleIsDueAtTheStart) {
  EXPECT_EQ((SampleSchedule{77, 120}.deadline()), 77);
}

TEST(SampleSchedule, samplesInTimeKeepToAGridThatDoesNotDrift) {
  SampleSchedule schedule{5, 120};
  for (int i = 0; i < 120 * 3600; ++i) schedule.advance(schedule.deadline() + 1000);
  EXPECT_EQ(schedule.deadline(), 5 + 3600 * second);
}

TEST(SampleSchedule, aLateSampleLeavesOutThePointsThatHavePassed) {
  SampleSchedule schedule{0, 120};
  schedule.advance(second / 120 * 3 + 1000);
  EXPECT_EQ(schedule.deadline(), second * 4 / 120);
}

TEST(SampleSchedule, aSampleExactlyAtAPointOfTheGridMovesToTheNext) {
  SampleSchedule schedule{0, 100};
  schedule.advance(second / 100);
  EXPECT_EQ(schedule.deadline(), second * 2 / 100);
}

TEST(SampleSchedule, theNextPointLiesInTheFutureAfterAnyDelay) {
  for (const std::int64_t rate : {1, 7, 60, 120}) {
    for (std::int64_t now = 0; now < 2 * second; now += second / 997) {
      SampleSchedule schedule{0, rate};
      schedule.advance(now);
      EXPECT_GT(schedule.deadline(), now);
      EXPECT_LE(schedule.deadline(), now + second / rate + 1);
    }
  }
}

TEST(SampleSchedule, aLongPauseDoesNotOverflow) {
  SampleSchedule schedule{0, 120};
  constexpr std::int64_t century = 100LL * 365 * 24 * 3600 * second;
  schedule.advance(century);
  EXPECT_GT(schedule.deadline(), century);
  EXPECT_LE(schedule.deadline(), century + second / 120 + 1);
}

}  // namespace
}  // namespace vesk::capture
