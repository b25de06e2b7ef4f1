#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstdlib>
#include <random>
#include <vector>

#include "media/SoundClock.h"
#include "media/StereoSample.h"
#include "media/TestTake.h"

namespace vesk::media {
namespace {

constexpr double longTake = 600;
constexpr double agreement = 0.005;

/// What came out.
struct Stream {
  SoundClock clock;
  std::vector<float> samples;

  explicit Stream(int channels = 1)
      : clock(channels, takeStart, [this](std::span<const float> piece) {
          samples.insert(samples.end(), piece.begin(), piece.end());
        }) {}
  Stream(const Stream&) = delete;
  Stream& operator=(const Stream&) = delete;
  ~Stream() = default;

  [[nodiscard]] double seconds() const { return static_cast<double>(samples.size()) / soundRate; }
};

/// A click each second, a hundredth of a second long.
float clicks(double time) {
  return time - std::floor(time) < 0.01 ? 0.5F : 0.0F;
}

/// The times at which the clicks begin.
std::vector<double> clickTimes(const std::vector<float>& samples) {
  std::vector<double> times;
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double time = static_cast<double>(i) / soundRate;
    if (samples[i] > 0.25F && (times.empty() || time - times.back() > 0.5)) {
      times.push_back(time);
    }
  }
  return times;
}

double offBy(double time) {
  return std::abs(time - std::round(time));
}

class SourceSpeeds : public testing::TestWithParam<double> {};

INSTANTIATE_TEST_SUITE_P(SoundClock, SourceSpeeds, testing::Values(0, 200, -200, 450));

TEST_P(SourceSpeeds, tenMinutesLastTenMinutes) {
  TestSoundSource source(1, clicks, GetParam());
  Stream stream;
  while (source.time() < longTake) {
    stream.clock.push(source.next());
  }
  const double end = source.time();
  stream.clock.finish();
  EXPECT_NEAR(stream.seconds(), end, agreement);
  const auto times = clickTimes(stream.samples);
  EXPECT_GE(times.size(), std::size_t{600});
  for (const double time : times) {
    EXPECT_LT(offBy(time), agreement) << time;
  }
}

TEST_P(SourceSpeeds, noClickIsEverOutOfPlaceThoughTheStampsTremble) {
  TestSoundSource source(1, clicks, GetParam());
  Stream stream;
  std::mt19937 random(3);
  std::uniform_real_distribution<double> tremble(-0.004, 0.004);
  while (source.time() < 120) {
    SoundBlock block = source.next();
    block.stamp += HostTime(std::llround(tremble(random) * 1e9));
    stream.clock.push(block);
  }
  for (const double time : clickTimes(stream.samples)) {
    EXPECT_LT(offBy(time), agreement) << time;
  }
}

TEST(SoundClock, tenMinutesWithGapsLastTenMinutes) {
  TestSoundSource source(1, clicks, 200);
  Stream stream;
  std::mt19937 random(5);
  while (source.time() < longTake) {
    stream.clock.push(source.next());
    if (random() % 200 == 0) {
      source.lose(1 + static_cast<int>(random() % 20));
    }
  }
  const double end = source.time();
  stream.clock.finish();
  EXPECT_NEAR(stream.seconds(), end, 0.4 + agreement);  // the last gap may be open
  int heard = 0;
  for (const double time : clickTimes(stream.samples)) {
    heard += offBy(time) < agreement ? 1 : 0;
  }
  EXPECT_GT(heard, 500);
}

TEST(SoundClock, aGapIsToldByStampsAloneAsWell) {
  TestSoundSource source(1, [](double /*time*/) { return 0.5F; });
  Stream stream;
  const auto push = [&](int blocks) {
    for (int i = 0; i < blocks; ++i) {
      SoundBlock block = source.next();
      block.position.reset();
      stream.clock.push(block);
    }
  };
  push(50);
  source.lose(25);
  push(50);
  stream.clock.finish();
  EXPECT_NEAR(stream.seconds(), 2.5, 0.001);
  const auto silent = std::ranges::count(stream.samples, 0.0F);
  EXPECT_NEAR(static_cast<double>(silent) / soundRate, 0.5, 0.002);
  EXPECT_EQ(stream.samples[static_cast<std::size_t>(1.25 * soundRate)], 0);
}

TEST(SoundClock, aSmallGapIsToldByThePosition) {
  TestSoundSource source(1, [](double /*time*/) { return 0.5F; });
  Stream stream;
  for (int i = 0; i < 100; ++i) {
    stream.clock.push(source.next());
    if (i == 50) {
      source.lose(1);
    }
  }
  stream.clock.finish();
  EXPECT_NEAR(static_cast<double>(stream.samples.size()), 101.0 * TestSoundSource::blockLength, 2);
}

TEST(SoundClock, whatComesTwiceIsCut) {
  TestSoundSource source(1);
  Stream stream;
  for (int i = 0; i < 50; ++i) {
    stream.clock.push(source.next());
  }
  const SoundBlock block = source.next();
  stream.clock.push(block);
  stream.clock.push(block);
  stream.clock.push(source.next());
  stream.clock.finish();
  EXPECT_NEAR(static_cast<double>(stream.samples.size()), 52.0 * TestSoundSource::blockLength, 2);
}

TEST(SoundClock, whatIsBeforeZeroIsCutAndALateStartIsSilent) {
  const std::vector<float> samples(soundRate, 0.5F);
  Stream early;
  early.clock.push({takeTime(-0.5), 0, samples});
  early.clock.finish();
  EXPECT_NEAR(early.seconds(), 0.5, 0.001);

  Stream late;
  late.clock.push({takeTime(0.5), 0, samples});
  late.clock.finish();
  EXPECT_NEAR(late.seconds(), 1.5, 0.001);
  EXPECT_EQ(late.samples[soundRate / 4], 0);
}

TEST(SoundClock, whatHasNotComeIsFilledWithSilence) {
  Stream stream(2);
  stream.clock.fillUntil(takeTime(1));
  stream.clock.fillUntil(takeTime(0.5));
  stream.clock.finish();
  EXPECT_NEAR(stream.seconds(), 2.0, 0.001);
  EXPECT_EQ(std::ranges::count(stream.samples, 0.0F), std::ssize(stream.samples));
}

TEST(SoundClock, followsTheSourcesSpeed) {
  TestSoundSource source(1, {}, 200);
  Stream stream;
  while (source.time() < 300) {
    stream.clock.push(source.next());
  }
  EXPECT_NEAR(stream.clock.correction(), -200, 10);
}

}  // namespace
}  // namespace vesk::media
