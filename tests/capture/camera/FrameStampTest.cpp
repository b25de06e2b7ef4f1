#include <gtest/gtest.h>

#include "capture/camera/FrameStamp.h"

namespace vesk::capture::camera {
namespace {

using std::chrono::milliseconds;
using std::chrono::seconds;

TEST(FrameStamp, isWhatTheCameraSays) {
  EXPECT_EQ(frameStamp(seconds{100} - milliseconds{40}, seconds{100}),
            seconds{100} - milliseconds{40});
  EXPECT_EQ(frameStamp(seconds{99}, seconds{100}), seconds{99});
}

TEST(FrameStamp, isTheArrivalWhereTheCameraSaysNothing) {
  EXPECT_EQ(frameStamp(std::nullopt, seconds{100}), seconds{100});
}

TEST(FrameStamp, isTheArrivalWhereTheCameraGoesByAnotherClock) {
  EXPECT_EQ(frameStamp(seconds{3}, seconds{100}), seconds{100});
  EXPECT_EQ(frameStamp(seconds{1'700'000'000}, seconds{100}), seconds{100});
}

}  // namespace
}  // namespace vesk::capture::camera
