#include <gtest/gtest.h>

#include "capture/pipewire/TickCount.h"
#include "media/StereoSample.h"

namespace vesk::capture::pipewire {
namespace {

TEST(TickCount, beginsAtZero) {
  TickCount count;
  EXPECT_EQ(count.positionOf({.ticks = 123'456, .tickRate = media::soundRate, .samples = 1024}), 0);
}

TEST(TickCount, goesOnByWhatCame) {
  TickCount count;
  count.positionOf({.ticks = 1000, .tickRate = media::soundRate, .samples = 1024});
  EXPECT_EQ(count.positionOf({.ticks = 2024, .tickRate = media::soundRate, .samples = 512}), 1024);
  EXPECT_EQ(count.positionOf({.ticks = 2536, .tickRate = media::soundRate, .samples = 512}), 1536);
}

TEST(TickCount, showsALoss) {
  TickCount count;
  count.positionOf({.ticks = 0, .tickRate = media::soundRate, .samples = 1024});
  EXPECT_EQ(count.positionOf({.ticks = 3072, .tickRate = media::soundRate, .samples = 1024}), 3072);
  EXPECT_EQ(count.positionOf({.ticks = 4097, .tickRate = media::soundRate, .samples = 1024}), 4097)
      << "down to a single sample";
}

TEST(TickCount, takesTheTrembleOfAResamplerForNoLoss) {
  TickCount count;
  count.positionOf({.ticks = 0, .tickRate = 44'100, .samples = 1114});
  EXPECT_EQ(count.positionOf({.ticks = 1024, .tickRate = 44'100, .samples = 1115}), 1114);
  EXPECT_EQ(count.positionOf({.ticks = 2048, .tickRate = 44'100, .samples = 1114}), 2229);
}

TEST(TickCount, showsALossInAGraphOfAnotherRate) {
  TickCount count;
  count.positionOf({.ticks = 0, .tickRate = 44'100, .samples = 1114});
  EXPECT_EQ(count.positionOf({.ticks = 44'100, .tickRate = 44'100, .samples = 1114}), 48'000);
}

}  // namespace
}  // namespace vesk::capture::pipewire
