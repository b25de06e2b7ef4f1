#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <random>
#include <vector>

#include "editor/HeardClock.h"

namespace vesk::editor {
namespace {

using std::chrono::milliseconds;

constexpr media::HostTime start = std::chrono::hours{30};
constexpr double block = 1024.0 / 48'000;

media::HostTime after(double seconds) {
  return start +
         std::chrono::duration_cast<media::HostTime>(std::chrono::duration<double>{seconds});
}

/// Reports of each block between two times after the start.
void report(HeardClock& clock, double from, double to, const std::function<double(double)>& heard) {
  for (double time = from; time < to; time += block) clock.report(after(time), heard(time));
}

TEST(HeardClock, isBelowZeroAndRisesWhileTheFirstSampleIsOnItsWay) {
  HeardClock clock{start};
  EXPECT_LT(clock.heard(start), 0);
  EXPECT_LT(clock.heard(start), clock.heard(after(0.05)));
  clock.report(after(0.06), -0.04);
  EXPECT_NEAR(clock.heard(after(0.06)), -0.04, 1e-9);
  EXPECT_NEAR(clock.heard(after(0.11)), 0.01, 1e-9);
}

TEST(HeardClock, goesByTheHostWhereNoSampleComes) {
  const HeardClock clock{start};
  EXPECT_NEAR(clock.heard(after(HeardClock::longestStart)), 0, 1e-9);
  EXPECT_NEAR(clock.heard(after(HeardClock::longestStart + 20)), 20, 1e-6);
}

TEST(HeardClock, waitsWhereTheFirstSampleTakesLongerThanItSeemed) {
  HeardClock clock{start};
  const double shown = clock.heard(after(0.4));
  clock.report(after(0.4), -0.3);
  EXPECT_EQ(clock.heard(after(0.4)), shown);
  EXPECT_EQ(clock.heard(after(0.5)), shown);
  EXPECT_NEAR(clock.heard(after(0.75)), 0.05, 1e-9);
}

TEST(HeardClock, goesOnWithoutReports) {
  HeardClock clock{start};
  report(clock, 0.05, 2, [](double time) { return time - 0.1; });
  EXPECT_NEAR(clock.heard(after(12)), 11.9, 1e-6);
}

TEST(HeardClock, evensOutTheErrorsOfReports) {
  HeardClock clock{start};
  std::mt19937 random(4);
  std::uniform_real_distribution<double> error(-0.003, 0.003);
  const auto heard = [&](double time) { return time - 0.1 + error(random); };
  report(clock, 0.05, 3, heard);
  double worst = 0;
  for (double time = 3; time < 20; time += block) {
    clock.report(after(time), heard(time));
    worst = std::max(worst, std::abs(clock.heard(after(time + 0.01)) - (time - 0.09)));
  }
  EXPECT_LT(worst, 0.001);
}

TEST(HeardClock, followsADeviceThatIsFastOrSlow) {
  for (const double rate : {0.9995, 1.0005}) {
    HeardClock clock{start};
    report(clock, 0.05, 60, [rate](double time) { return rate * time - 0.1; });
    EXPECT_NEAR(clock.heard(after(60)), rate * 60 - 0.1, 0.0005) << rate;
  }
}

TEST(HeardClock, neverGoesBackAndSlidesWhereReportsJump) {
  HeardClock clock{start};
  double previous = clock.heard(start);
  double latest = 0;
  for (int step = 1; step < 6'000; ++step) {
    const double time = step * 0.005;
    const double delay = time < 10 ? 0.1 : time < 20 ? 0.3 : 0.02;
    if (step % 4 == 0) clock.report(after(time), time - delay);
    latest = clock.heard(after(time));
    EXPECT_GE(latest, previous);
    if (previous > 0) {
      EXPECT_LE(latest - previous, 0.005 * (1 + HeardClock::fastestSlide) + 1e-9);
      EXPECT_GE(latest - previous, 0.005 * (1 - HeardClock::fastestSlide) - 1e-9);
    }
    previous = latest;
  }
  EXPECT_NEAR(latest, 6'000 * 0.005 - 0.025, 0.002) << "it has got there";
}

TEST(HeardClock, aSlideEndsWhereItShouldWithoutFurtherReports) {
  HeardClock clock{start};
  clock.report(after(0.1), 0.0);
  clock.report(after(1.1), 0.8);
  EXPECT_NEAR(clock.heard(after(1.1)), 1, 1e-9);
  EXPECT_NEAR(clock.heard(after(21.1)), 20.8, 1e-6);
  clock.report(after(21.1), 20.81);
  EXPECT_NEAR(clock.heard(after(31.1)), 30.81, 1e-6);
}

TEST(HeardClock, anInstantBeforeTheLastReportCountsAsThatReport) {
  HeardClock clock{start};
  clock.report(after(1), 0.5);
  EXPECT_EQ(clock.heard(after(0.9)), clock.heard(after(1)));
}

}  // namespace
}  // namespace vesk::editor
