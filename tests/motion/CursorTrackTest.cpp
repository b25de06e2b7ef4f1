#include <gtest/gtest.h>

#include <cmath>

#include "motion/CursorTrack.h"
#include "motion/TakeBuilder.h"

namespace vesk::motion {
namespace {

using test::click;
using test::move;
using test::take;

CursorTrack trackOf(std::vector<package::RecordedEvent> events) {
  return CursorTrack(take(20, std::move(events)));
}

/// A cursor on a straight line, with a tremor of ±0.01 from sample to sample.
CursorTrack trembling(std::vector<double> clicks = {}) {
  std::vector<package::RecordedEvent> events;
  for (int i = 0; i <= 1200; ++i) {
    events.push_back(move(i / 120.0, 0.1 + i * 0.0005, 0.5 + (i % 2 == 0 ? 0.01 : -0.01)));
  }
  CursorTrack track = trackOf(std::move(events));
  track.clickTimes = std::move(clicks);
  return track;
}

TEST(CursorTrack, takesPositionsOfClicksReleasesMovesAndScrollsOnly) {
  auto half = move(5, 0.5, 0.5);
  half.y.reset();
  const CursorTrack track =
      trackOf({move(1, 0.1, 0.1), click(2, 0.2, 0.2), test::at(2.5, test::Kind::up, 0.3, 0.3),
               test::at(3, test::Kind::scroll, 0.4, 0.4), test::zoomIn(4, 0.9, 0.9), half});
  ASSERT_EQ(track.samples.size(), 4U);
  EXPECT_EQ(track.samples[3].t, 3.0);
  EXPECT_EQ(track.samples[3].p, glm::vec2(0.4F, 0.4F));
  EXPECT_EQ(track.clickTimes, std::vector<double>{2});
  EXPECT_EQ(track.anchorWindow, 0.08);
}

TEST(CursorTrack, anEmptyLogPutsTheCursorInTheMiddle) {
  const CursorTrack track = trackOf({});
  for (const double t : {-1.0, 0.0, 3.0, 1e9}) {
    EXPECT_EQ(track.smoothed(t, 0.7, 0.12), glm::vec2(0.5F, 0.5F));
  }
}

TEST(CursorTrack, aSingleEventIsThePositionAtAnyTime) {
  const CursorTrack track = trackOf({move(3, 0.2, 0.8)});
  for (const double t : {-1.0, 0.0, 3.0, 1e9}) {
    EXPECT_EQ(track.smoothed(t, 0.7, 0.12), glm::vec2(0.2F, 0.8F));
    EXPECT_EQ(track.position(t), glm::vec2(0.2F, 0.8F));
  }
}

TEST(CursorTrack, rawPositionsRunStraightAndStopAtTheEnds) {
  const CursorTrack track = trackOf({move(1, 0.0, 0.5), move(2, 0.5, 0.5)});
  EXPECT_EQ(track.position(0), glm::vec2(0.0F, 0.5F));
  EXPECT_EQ(track.position(1.5), glm::vec2(0.25F, 0.5F));
  EXPECT_EQ(track.position(9), glm::vec2(0.5F, 0.5F));
}

TEST(CursorTrack, samplesAtOneTimeDoNotDivideByZero) {
  const CursorTrack track =
      trackOf({move(1, 0.1, 0.1), move(2, 0.2, 0.2), move(2, 0.4, 0.4), move(3, 0.5, 0.5)});
  EXPECT_EQ(track.position(2), glm::vec2(0.2F, 0.2F));
  EXPECT_EQ(trackOf({move(1, 0, 0), move(2, 0.2, 0.2), move(2 + 5e-10, 0.4, 0.4), move(3, 0, 0)})
                .position(2 + 2e-10),
            glm::vec2(0.4F, 0.4F));
}

TEST(CursorTrack, smoothingFadesOutTowardsAClick) {
  const CursorTrack track = trembling({5.0, 7.0});
  EXPECT_EQ(track.effectiveStrength(5.0, 0.7), 0.0);
  EXPECT_NEAR(track.effectiveStrength(5.04, 0.7), 0.35, 1e-9);
  EXPECT_NEAR(track.effectiveStrength(4.96, 0.7), 0.35, 1e-9);
  EXPECT_EQ(track.effectiveStrength(6.9, 0.7), 0.7);
  EXPECT_EQ(track.effectiveStrength(5.0 + 0.0801, 0.7), 0.7);
  EXPECT_EQ(track.effectiveStrength(0, 0.7), 0.7);
  EXPECT_EQ(track.effectiveStrength(99, 0.7), 0.7);
  EXPECT_EQ(trembling().effectiveStrength(5.0, 0.7), 0.7);
}

TEST(CursorTrack, aDistanceOfExactlyTheWindowIsFullStrength) {
  CursorTrack track = trembling({0.0});
  EXPECT_EQ(track.effectiveStrength(0.08, 0.7), 0.7);
}

TEST(CursorTrack, atAClickTheCursorIsExactlyWhereItWasLogged) {
  CursorTrack track = trembling();
  track.clickTimes = {track.samples[600].t};
  EXPECT_EQ(track.smoothed(track.samples[600].t, 0.7, 0.12), track.samples[600].p);
  EXPECT_NE(track.smoothed(track.samples[700].t, 0.7, 0.12), track.samples[700].p);
}

TEST(CursorTrack, strengthZeroIsTheRawPositionForAnyWindow) {
  const CursorTrack track = trembling();
  for (const double window : {0.0, 0.12, 5.0}) {
    EXPECT_EQ(track.smoothed(3.3333, 0, window), track.position(3.3333));
  }
}

TEST(CursorTrack, smoothingRemovesTheTremorWithoutLag) {
  const CursorTrack track = trembling();
  for (int i = 200; i < 1000; ++i) {
    const auto& sample = track.samples[static_cast<std::size_t>(i)];
    const glm::vec2 smooth = track.smoothed(sample.t, 1, 0.2);
    EXPECT_LT(std::abs(smooth.y - 0.5F), 0.002F);
    EXPECT_NEAR(smooth.x, sample.p.x, 1e-4F);  // a lag of one sample would be 5e-4
  }
}

TEST(CursorTrack, acrossAGapInTheLogTheCursorRunsStraight) {
  const CursorTrack track = trackOf({move(0, 0, 0), move(1, 0.2, 0.2), move(5, 0.6, 1.0)});
  for (const double t : {2.0, 3.0, 4.0}) {
    EXPECT_EQ(track.smoothed(t, 0.7, 0.12), track.position(t));
  }
}

TEST(CursorTrack, aWindowOfZeroStillFiltersOverFourMilliseconds) {
  // Two samples 4 ms apart: a filter of sigma 0 would leave each where it is.
  const CursorTrack track = trackOf({move(0, 0, 0), move(1, 0.4, 0.4), move(1.004, 0.6, 0.6),
                                     move(1.008, 0.4, 0.4), move(2, 0, 0)});
  const glm::vec2 middle = track.smoothed(1.004, 1, 0);
  const float side = std::exp(-0.5F);
  EXPECT_NEAR(middle.x, (0.6F + 2 * side * 0.4F) / (1 + 2 * side), 1e-5F);
}

TEST(CursorTrack, senselessPositionsStayFinite) {
  const CursorTrack track =
      trackOf({move(1, 1e300, -1e300), move(1.01, -1e300, 1e300), move(1.02, 0.5, 0.5)});
  for (double t = 0.9; t < 1.1; t += 0.001) {
    const glm::vec2 p = track.smoothed(t, 0.7, 0.12);
    EXPECT_TRUE(std::isfinite(p.x) && std::isfinite(p.y)) << t;
  }
}

}  // namespace
}  // namespace vesk::motion
