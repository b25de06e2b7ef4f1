#include <gtest/gtest.h>

#include "capture/x11/KeyRepeat.h"

namespace vesk::capture::x11 {
namespace {

using Repeat = KeyRepeat::Repeat;

constexpr RepeatRate rate{.delay = 0.5, .interval = 0.125};

TEST(KeyRepeat, aHeldKeyRepeatsAfterTheDelay) {
  KeyRepeat repeat;
  repeat.press(38, 10, rate);
  EXPECT_EQ(repeat.due(), 10.5);
  EXPECT_EQ(repeat.next(10.25), std::nullopt);
  EXPECT_EQ(repeat.next(10.5), (Repeat{.key = 38, .time = 10.5}));
  EXPECT_EQ(repeat.next(10.5), std::nullopt);
  EXPECT_EQ(repeat.due(), 10.625);
}

TEST(KeyRepeat, repeatsThatAreLateKeepTheirTimes) {
  KeyRepeat repeat;
  repeat.press(38, 10, rate);
  EXPECT_EQ(repeat.next(10.7), (Repeat{.key = 38, .time = 10.5}));
  EXPECT_EQ(repeat.next(10.7), (Repeat{.key = 38, .time = 10.625}));
  EXPECT_EQ(repeat.next(10.7), std::nullopt);
}

TEST(KeyRepeat, itsReleaseEndsItAndThatOfAnotherKeyDoesNot) {
  KeyRepeat repeat;
  repeat.press(38, 10, rate);
  repeat.release(39);
  EXPECT_TRUE(repeat.due());
  repeat.release(38);
  EXPECT_EQ(repeat.due(), std::nullopt);
  EXPECT_EQ(repeat.next(100), std::nullopt);
}

TEST(KeyRepeat, theKeyPressedLastRepeats) {
  KeyRepeat repeat;
  repeat.press(38, 10, rate);
  repeat.press(39, 10.25, rate);
  repeat.release(38);
  EXPECT_EQ(repeat.next(11), (Repeat{.key = 39, .time = 10.75}));
}

TEST(KeyRepeat, aKeyThatDoesNotRepeatLeavesTheOtherAlone) {
  KeyRepeat repeat;
  repeat.press(38, 10, rate);
  repeat.press(50, 10.25, std::nullopt);
  EXPECT_EQ(repeat.next(10.5), (Repeat{.key = 38, .time = 10.5}));
}

TEST(KeyRepeat, endsWhenAllKeysAreReleased) {
  KeyRepeat repeat;
  repeat.press(38, 10, rate);
  repeat.releaseAll();
  EXPECT_EQ(repeat.due(), std::nullopt);
}

}  // namespace
}  // namespace vesk::capture::x11
