#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>

#include "media/EncoderPace.h"
#include "media/ScrollingText.h"

namespace vesk::media {
namespace {

constexpr int fps = 60;

EncoderPace paceOf(int pictures, double millisecondsEach) {
  return {.works = true, .pictures = pictures, .seconds = pictures * millisecondsEach / 1000};
}

TEST(EncoderPace, anEncoderMustBeHalfAsFastAgainAsThePicturesCome) {
  EXPECT_EQ(judge(paceOf(fps, 11.0), fps), PaceVerdict::holds);
  EXPECT_EQ(judge(paceOf(fps, 11.2), fps), PaceVerdict::fails);
}

TEST(EncoderPace, isJudgedByTheRateThatIsWanted) {
  EXPECT_EQ(judge(paceOf(30, 20), 30), PaceVerdict::holds);
  EXPECT_EQ(judge(paceOf(60, 20), 60), PaceVerdict::fails);
}

TEST(EncoderPace, isSureEarlyWhereItIsClear) {
  EXPECT_EQ(judge(paceOf(12, 5), fps), PaceVerdict::holds);
  EXPECT_EQ(judge(paceOf(12, 24), fps), PaceVerdict::fails);
  EXPECT_EQ(judge(paceOf(12, 9), fps), PaceVerdict::unsure);
  EXPECT_EQ(judge(paceOf(12, 15), fps), PaceVerdict::unsure);
}

TEST(EncoderPace, aFewPicturesTellNothing) {
  EXPECT_EQ(judge(paceOf(0, 0), fps), PaceVerdict::unsure);
  EXPECT_EQ(judge(paceOf(11, 1), fps), PaceVerdict::unsure);
  EXPECT_EQ(judge(paceOf(11, 80), fps), PaceVerdict::unsure);
}

TEST(EncoderPace, isSureAfterASecondAtTheLatest) {
  EXPECT_EQ(judge(paceOf(1, 1000), fps), PaceVerdict::fails);
  for (double each = 1; each < 40; each += 0.5) {
    EXPECT_NE(judge(paceOf(fps, each), fps), PaceVerdict::unsure) << each;
  }
}

TEST(EncoderPace, anEncoderThatDoesNotWorkFails) {
  EXPECT_EQ(judge({.works = false, .pictures = fps, .seconds = 0.001}, fps), PaceVerdict::fails);
}

TEST(EncoderPace, isMeasuredWithARealEncoder) {
  const PictureTrackSettings settings{.width = 320, .height = 180, .fps = 10, .bitRate = 500'000};
  const EncoderPace pace = measurePace(plainestCaptureEncoder(), settings);
  EXPECT_TRUE(pace.works);
  EXPECT_GT(pace.pictures, 0);
  EXPECT_GT(pace.seconds, 0);
  EXPECT_LE(pace.pictures, settings.fps);
  EXPECT_EQ(judge(pace, settings.fps), PaceVerdict::holds);
}

TEST(EncoderPace, anEncoderThatIsNotThereDoesNotWork) {
  CaptureEncoder unknown = plainestCaptureEncoder();
  unknown.encoder = "no such encoder";
  EXPECT_EQ(measurePace(unknown, {.width = 320, .height = 180, .fps = 10, .bitRate = 500'000}),
            EncoderPace());
}

TEST(ScrollingText, movesUpByThreeRowsOfDots) {
  constexpr int width = 320;
  constexpr int height = 180;
  ScrollingText text(width, height);
  I420Picture first(width, height);
  I420Picture second(width, height);
  text.drawNext(first);
  text.drawNext(second);
  constexpr int step = 6;
  int differing = 0;
  for (int y = 0; y + step < height; ++y) {
    const auto& before = first.planes()[0];
    const auto& after = second.planes()[0];
    EXPECT_EQ(
        std::memcmp(before.data + before.stride * (y + step), after.data + after.stride * y, width),
        0);
    differing +=
        std::memcmp(before.data + before.stride * y, after.data + after.stride * y, width) != 0 ? 1
                                                                                                : 0;
  }
  EXPECT_GT(differing, height / 2);
}

}  // namespace
}  // namespace vesk::media
