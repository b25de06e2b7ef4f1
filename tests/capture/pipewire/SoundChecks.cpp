#include "capture/pipewire/SoundChecks.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>

#include "media/HostTime.h"
#include "media/StereoSample.h"

namespace vesk::capture::pipewire::test {
namespace {

using std::chrono::milliseconds;

}  // namespace

void expectGoodTimes(const std::vector<HeardSound::Block>& blocks, int channels) {
  for (std::size_t index = 0; index < blocks.size(); ++index) {
    const auto& block = blocks[index];
    EXPECT_LE(block.stamp, block.arrival);
    EXPECT_GT(block.stamp, block.arrival - milliseconds{500});
    ASSERT_TRUE(block.position);
    if (index == 0) continue;
    const auto& before = blocks[index - 1];
    EXPECT_GT(block.stamp, before.stamp);
    const std::int64_t counted = *block.position - *before.position;
    EXPECT_GE(counted, std::ssize(before.samples) / channels);
    EXPECT_NEAR(static_cast<double>(counted) / media::soundRate,
                media::secondsOf(block.stamp - before.stamp), 0.012);
  }
}

double worstStampError(const std::vector<HeardSound::Block>& blocks) {
  double worst = 0;
  for (const auto& block : blocks) {
    if (std::ranges::count(block.samples, 0.0F) > 4) continue;
    const double second = media::secondsOf(block.stamp % std::chrono::seconds{1});
    const double error = static_cast<double>(block.samples.front()) - second;
    worst = std::max(worst, std::abs(error - std::round(error)));
  }
  return worst;
}

}  // namespace vesk::capture::pipewire::test
