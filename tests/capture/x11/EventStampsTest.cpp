#include <gtest/gtest.h>

#include "capture/x11/EventStamps.h"

namespace vesk::capture::x11 {
namespace {

constexpr double turn = 4294967.296;  // seconds until the server's count starts again

TEST(EventStamps, beforeTheFirstTurnAStampIsTheClockInMilliseconds) {
  EXPECT_DOUBLE_EQ(secondsOfStamp(26'612'123, 26'612.124), 26'612.123);
  EXPECT_DOUBLE_EQ(secondsOfStamp(0, 0.5), 0);
}

TEST(EventStamps, afterTurnsAStampIsTheNearestInstant) {
  EXPECT_NEAR(secondsOfStamp(1000, turn + 1.25), turn + 1, 1e-6);
  EXPECT_NEAR(secondsOfStamp(1000, 3 * turn + 1.25), 3 * turn + 1, 1e-6);
}

TEST(EventStamps, anEventFromJustBeforeTheTurnIsOld) {
  EXPECT_NEAR(secondsOfStamp(0xFFFFFFFF, turn + 0.004), turn - 0.001, 1e-6);
}

// The server's clock and ours are read one after the other and round differently.
TEST(EventStamps, anEventMayLieALittleAhead) {
  EXPECT_NEAR(secondsOfStamp(5001, 5.0), 5.001, 1e-9);
  EXPECT_NEAR(secondsOfStamp(1, turn - 0.001), turn + 0.001, 1e-6);
}

TEST(EventStamps, daysOldEventsKeepTheirTime) {
  EXPECT_NEAR(secondsOfStamp(0, 20 * 86400.0), 0, 1e-9);
}

}  // namespace
}  // namespace vesk::capture::x11
