#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <numbers>
#include <random>
#include <span>
#include <vector>

#include "media/PeakLimiter.h"

namespace vesk::media {
namespace {

using Sound = std::vector<StereoSample>;

Sound limited(const Sound& sound, std::size_t block = 4096) {
  PeakLimiter limiter;
  Sound result;
  for (std::size_t at = 0; at < sound.size(); at += block) {
    limiter.push(std::span(sound).subspan(at, std::min(block, sound.size() - at)), result);
  }
  limiter.finish(result);
  return result;
}

Sound sine(double frequency, double phase, float amplitude, std::size_t length) {
  Sound sound(length);
  for (std::size_t i = 0; i < length; ++i) {
    const double angle =
        2 * std::numbers::pi * frequency * static_cast<double>(i) / soundRate + phase;
    const float value = amplitude * static_cast<float>(std::sin(angle));
    sound[i] = {value, -value};
  }
  return sound;
}

Sound noise(float amplitude, std::size_t length, unsigned seed = 11) {
  std::mt19937 random(seed);
  std::uniform_real_distribution<float> values(-amplitude, amplitude);
  Sound sound(length);
  for (StereoSample& sample : sound) {
    sample = {values(random), values(random)};
  }
  return sound;
}

/// Forty tones up to 20 kHz, as loud as they please.
Sound chord(std::size_t length) {
  std::mt19937 random(5);
  Sound sound(length);
  for (int i = 0; i < 40; ++i) {
    const double frequency = std::uniform_real_distribution(20.0, 20'000.0)(random);
    const Sound voice = sine(frequency, frequency, 0.4F, length);
    for (std::size_t at = 0; at < length; ++at) {
      sound[at].left += voice[at].left;
      sound[at].right += voice[at].right;
    }
  }
  return sound;
}

/// The greatest magnitude of the signal that the left samples stand for, 16 points a sample.
double truePeak(const Sound& sound) {
  constexpr int reach = 64;
  constexpr int points = 16;
  double peak = 0;
  for (int point = 0; point < points; ++point) {
    std::array<double, 2 * reach> taps{};
    for (int tap = 0; tap < 2 * reach; ++tap) {
      const double x = tap - (reach - 1) - static_cast<double>(point) / points;
      const double window = 0.5 + 0.5 * std::cos(std::numbers::pi * x / reach);
      const double angle = std::numbers::pi * x;
      taps.at(static_cast<std::size_t>(tap)) = window * (x == 0 ? 1 : std::sin(angle) / angle);
    }
    for (std::size_t i = reach; i + reach < sound.size(); ++i) {
      double value = 0;
      for (int tap = 0; tap < 2 * reach; ++tap) {
        const auto at = i + static_cast<std::size_t>(tap) + 1 - reach;
        value += taps.at(static_cast<std::size_t>(tap)) * double{sound[at].left};
      }
      peak = std::max(peak, std::abs(value));
    }
  }
  return peak;
}

TEST(PeakLimiter, soundBelowFullScalePassesBitForBit) {
  for (const Sound& sound : {sine(997, 0.3, 0.999F, 20'000), noise(0.3F, 20'000), Sound(5'000)}) {
    EXPECT_TRUE(limited(sound) == sound);
  }
}

TEST(PeakLimiter, asMuchComesOutAsWentInWhateverTheBlocks) {
  const Sound sound = noise(1.5F, 3'001);
  const Sound whole = limited(sound, sound.size());
  for (const std::size_t block : {1U, 7U, 255U, 256U, 1024U}) {
    EXPECT_TRUE(limited(sound, block) == whole) << block;
  }
  for (const std::size_t length : {0U, 1U, 15U, 16U, 255U, 256U}) {
    EXPECT_EQ(limited(Sound(length, {2, 2})).size(), length);
  }
}

TEST(PeakLimiter, loudSoundIsHeldBelowFullScale) {
  for (const Sound& sound :
       {sine(220, 0, 4, 30'000), sine(9'000, 0.7, 1.7F, 30'000), chord(30'000)}) {
    EXPECT_GT(truePeak(sound), 1.5);
    EXPECT_LE(truePeak(limited(sound)), 1.0);
  }
}

TEST(PeakLimiter, aPeakBetweenTheSamplesIsSeen) {
  // At a quarter of the rate and 45 degrees, every sample is 3 dB below the crest.
  const Sound sound = sine(soundRate / 4.0, std::numbers::pi / 4, 1.25F, 20'000);
  const auto highest = std::ranges::max(sound, {}, &StereoSample::left).left;
  ASSERT_LT(highest, 0.9F);
  EXPECT_LE(truePeak(limited(sound)), 1.0);
}

TEST(PeakLimiter, aLoudPassageIsTurnedDownNoMoreThanItTakes) {
  const Sound result = limited(sine(440, 0, 1.6F, 48'000));
  EXPECT_GT(truePeak(result), 0.97);
}

TEST(PeakLimiter, bothSidesAreTurnedDownAlike) {
  Sound sound = sine(300, 0, 2, 10'000);
  for (StereoSample& sample : sound) {
    sample.right = 0.1F * sample.left;
  }
  for (const StereoSample& sample : limited(sound)) {
    EXPECT_NEAR(sample.right, 0.1F * sample.left, 1e-7F);
  }
}

TEST(PeakLimiter, awayFromAPeakSamplesPassBitForBit) {
  Sound sound = noise(0.3F, 120'000);
  constexpr std::size_t peak = 40'000;
  sound[peak] = {3, 0};
  const Sound result = limited(sound);
  constexpr std::size_t before = soundRate / 200 + 17;
  EXPECT_TRUE(std::equal(sound.begin(), sound.begin() + (peak - before), result.begin()));
  EXPECT_TRUE(
      std::equal(sound.begin() + peak + soundRate, sound.end(), result.begin() + peak + soundRate));
  EXPECT_FALSE(result[peak + 100] == sound[peak + 100]);
  EXPECT_LE(result[peak].left, 1.0F);
}

TEST(PeakLimiter, theGainMovesInSmallSteps) {
  Sound sound(60'000, {0.25F, 0.25F});
  sound[20'000] = {5, 5};
  const Sound result = limited(sound);
  for (std::size_t i = 1; i < result.size(); ++i) {
    if (i != 20'000 && i != 20'001) {
      EXPECT_LT(std::abs(result[i].left - result[i - 1].left), 0.25F * 0.01F) << i;
    }
  }
}

TEST(PeakLimiter, whatIsNoSoundBecomesSilence) {
  Sound sound = noise(0.3F, 5'000);
  const Sound clean = [&] {
    Sound copy = sound;
    for (const std::size_t at : {1'000U, 1'001U, 2'000U, 3'000U}) copy[at].left = 0;
    return copy;
  }();
  sound[1'000].left = std::numeric_limits<float>::quiet_NaN();
  sound[1'001].left = std::numeric_limits<float>::infinity();
  sound[2'000].left = -std::numeric_limits<float>::infinity();
  sound[3'000].left = std::numeric_limits<float>::max();
  EXPECT_TRUE(limited(sound) == clean);
}

TEST(PeakLimiter, theLoudestSoundThatCountsStaysBelowFullScale) {
  const Sound result = limited(Sound(2'000, {9e5F, -9e5F}));
  for (const StereoSample& sample : result) {
    EXPECT_LE(std::abs(sample.left), 1.0F);
    EXPECT_LE(std::abs(sample.right), 1.0F);
  }
}

}  // namespace
}  // namespace vesk::media
