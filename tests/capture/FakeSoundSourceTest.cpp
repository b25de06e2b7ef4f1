#include <gtest/gtest.h>

#include <array>
#include <atomic>
#include <chrono>
#include <cmath>
#include <numbers>
#include <vector>

#include "capture/PointerSampler.h"
#include "capture/contract/SoundSourceContract.h"
#include "capture/fake/FakeSoundSource.h"

namespace vesk::capture {
namespace {

using namespace std::chrono_literals;
using fake::FakeSoundSource;

/// Plays into the fake, 120 blocks a second.
class FakeSoundRig {
 public:
  SoundSource& source() { return source_; }
  void playTone(double frequency) { frequency_ = frequency; }
  void playNothing() { frequency_ = 0; }
  void breakDown() { source_.end({.message = "声音服务已停止"}); }

 private:
  static constexpr std::size_t channels = 2;
  static constexpr std::int64_t blockLength = media::soundRate / 120;

  void play(double now) {
    const double step = 2 * std::numbers::pi * frequency_ / media::soundRate;
    std::array<float, blockLength * channels> samples{};
    for (std::size_t i = 0; i < samples.size(); ++i) {
      const auto instant = position_ + static_cast<std::int64_t>(i / channels);
      samples.at(i) = static_cast<float>(0.5 * std::sin(step * static_cast<double>(instant)));
    }
    source_.deliver(
        {.stamp = std::chrono::duration_cast<media::HostTime>(std::chrono::duration<double>{now}),
         .position = position_,
         .samples = samples});
    position_ += blockLength;
  }

  FakeSoundSource source_{channels};
  std::atomic<double> frequency_ = 0;
  std::int64_t position_ = 0;
  PointerSampler player_{[this](double now) { play(now); }};
};

TEST(FakeSoundSource, blocksArriveAsTheyWereGiven) {
  FakeSoundSource source{1};
  std::vector<float> heard;
  const auto listening = source.listen(
      [&](const media::SoundBlock& block) {
        EXPECT_EQ(block.stamp, 3ms);
        EXPECT_EQ(block.position, 77);
        heard.assign(block.samples.begin(), block.samples.end());
      },
      [](const BackendError&) {});
  const std::vector<float> samples{0.5F, -0.25F};
  source.deliver({.stamp = 3ms, .position = 77, .samples = samples});
  EXPECT_EQ(heard, samples);
  EXPECT_EQ(source.channels(), 1);
  EXPECT_EQ(source.openCount(), 1);
}

TEST(FakeSoundSource, aDeviceCanBeUnplugged) {
  FakeSoundSource source{2, "耳机"};
  EXPECT_EQ(source.deviceName(), "耳机");
  source.setDeviceName(std::nullopt);
  EXPECT_EQ(source.deviceName(), std::nullopt);
}

TEST(FakeSoundSource, itFailsUntilItIsToldNotTo) {
  FakeSoundSource source{2};
  const auto listen = [&] {
    return source.listen([](const media::SoundBlock&) {}, [](const BackendError&) {});
  };
  source.fail(BackendError{"声音服务没有运行"});
  EXPECT_EQ(listen().error().message, "声音服务没有运行");
  source.fail(std::nullopt);
  EXPECT_TRUE(listen().has_value());
}

}  // namespace

namespace contract {
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, SoundSourceContract, FakeSoundRig);
}  // namespace contract

}  // namespace vesk::capture
