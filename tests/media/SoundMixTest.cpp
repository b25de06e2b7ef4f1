#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <random>

#include "ProcessLimits.h"
#include "media/SoundMix.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/TestSound.h"

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using Sound = std::vector<StereoSample>;

class SoundMixTest : public testing::Test {
 protected:
  fs::path source(const std::string& name, SoundRecipe recipe) {
    makeSound(folder_ / name, recipe);
    return folder_ / name;
  }

  Sound mixed(const SoundMix& mix) {
    const auto written = mix.write(mix_);
    EXPECT_TRUE(written) << (written ? "" : written.error().message);
    return played(mix_);
  }

  TemporaryFolder folder_;
  fs::path mix_ = folder_ / "mix.m4a";
};

TEST_F(SoundMixTest, isStereoAacOfTheAskedKind) {
  std::mt19937 random(9);
  const auto noise = [&](std::int64_t, int) {
    return std::uniform_real_distribution(-0.5F, 0.5F)(random);
  };
  const fs::path file =
      source("a.mov",
             {.encoder = "pcm_f32le", .muxer = "mov", .channels = 2, .seconds = 3, .wave = noise});
  mixed({.sources = {{.clip = {.file = file, .length = 3}}}, .duration = 3});
  const StoredTrack track = storedSound(mix_);
  EXPECT_EQ(track.codec, "aac");
  EXPECT_TRUE(track.isLowComplexity);
  EXPECT_EQ(track.rate, 48'000);
  EXPECT_EQ(track.channels, 2);
  EXPECT_NEAR(static_cast<double>(track.bitRate), 192'000, 10'000);
  EXPECT_EQ(bytesOf(mix_).substr(4, 8), "ftypM4A ");
}

TEST_F(SoundMixTest, lastsAsLongAsAskedToTheSample) {
  const fs::path file = source("a.m4a", {.seconds = 3, .wave = tone(440, 0.5F)});
  for (const double duration : {0.001, 0.5, 1.016666666, 2.0}) {
    fs::remove(mix_);
    mixed({.sources = {{.clip = {.file = file, .length = 3}}}, .duration = duration});
    std::int64_t end = 0;
    for (const StoredPacket& packet : storedSound(mix_).packets) {
      end = packet.pts + packet.duration;
    }
    EXPECT_EQ(end, std::llround(duration * 48'000)) << duration;
  }
}

TEST_F(SoundMixTest, sourcesStandToTheSampleWhereTheirClipsSay) {
  std::mt19937 random(3);
  std::vector<float> noise(9'600);
  std::ranges::generate(noise, [&] { return std::uniform_real_distribution(-0.4F, 0.4F)(random); });
  const auto wave = [&](std::int64_t index, int) {
    return index < std::ssize(noise) ? noise[static_cast<std::size_t>(index)] : 0.0F;
  };
  const fs::path file = source("raw.mov", {.encoder = "pcm_f32le", .muxer = "mov", .wave = wave});
  constexpr std::int64_t start = 12'080;  // 151/600 s
  const Sound sound = mixed(
      {.sources = {{.clip = {.file = file, .start = 151 / 600.0, .length = 1}}}, .duration = 2});
  const auto likeness = [&](std::int64_t lag) {
    double sum = 0;
    for (std::int64_t i = 0; i < std::ssize(noise); ++i) {
      sum += double{noise[static_cast<std::size_t>(i)]} *
             double{sound[static_cast<std::size_t>(start + lag + i)].left};
    }
    return sum;
  };
  for (const std::int64_t lag : {-20, -3, -2, -1, 1, 2, 3, 20}) {
    EXPECT_GT(likeness(0), 2 * std::abs(likeness(lag))) << lag;
  }
}

TEST_F(SoundMixTest, gainsScaleEachSource) {
  const fs::path low = source("low.m4a", {.seconds = 2, .wave = tone(440, 0.2F)});
  const auto loudnessAt = [&](float gain) {
    fs::remove(mix_);
    return loudness(
        mixed({.sources = {{.clip = {.file = low, .length = 2}, .gain = gain}}, .duration = 2}),
        0.2, 1.8);
  };
  const double recorded = loudness(played(low), 0.2, 1.8);
  EXPECT_NEAR(loudnessAt(1) / recorded, 1, 0.005);
  EXPECT_NEAR(loudnessAt(0.25F) / recorded, 0.25, 0.005);
  EXPECT_NEAR(loudnessAt(2) / recorded, 2, 0.01);
  EXPECT_LT(loudnessAt(0), 1e-6);
}

TEST_F(SoundMixTest, twoLoudSourcesDoNotClip) {
  const fs::path a = source("a.m4a", {.channels = 2, .seconds = 2, .wave = tone(440, 0.9F)});
  const fs::path b = source("b.m4a", {.seconds = 2, .wave = tone(700, 0.9F)});
  const Sound sound = mixed({.sources = {{.clip = {.file = a, .length = 2}, .gain = 2},
                                         {.clip = {.file = b, .length = 2}, .gain = 2}},
                             .duration = 2});
  float highest = 0;
  for (const StereoSample& sample : sound) {
    highest = std::max({highest, std::abs(sample.left), std::abs(sample.right)});
  }
  // What the encoder adds to sound below full scale.
  constexpr float encoderOvershoot = 0.03F;
  EXPECT_LT(highest, 1 + encoderOvershoot);
  EXPECT_GT(highest, 0.9F);
}

TEST_F(SoundMixTest, aSourceIsCutAtItsLength) {
  const fs::path file = source("a.m4a", {.seconds = 2, .wave = tone(440, 0.5F)});
  const Sound sound =
      mixed({.sources = {{.clip = {.file = file, .start = 0.5, .length = 0.5}}}, .duration = 2});
  EXPECT_LT(loudness(sound, 0, 0.47), 1e-3);
  EXPECT_GT(loudness(sound, 0.53, 0.97), 0.3);
  EXPECT_LT(loudness(sound, 1.05, 2), 1e-3);
}

TEST_F(SoundMixTest, unreadableSourcesAreSilentAndTheOthersAreHeard) {
  const fs::path good = source("good.m4a", {.seconds = 2, .wave = beep(1)});
  writeBytes(folder_ / "garbage.m4a", std::string(9'000, 'q'));
  const Sound sound = mixed({.sources = {{.clip = {.file = folder_ / "garbage.m4a", .length = 2}},
                                         {.clip = {.file = folder_ / "missing.m4a", .length = 2}},
                                         {.clip = {.file = good, .length = 2}}},
                             .duration = 2});
  EXPECT_NEAR(beepTime(sound), 1, 1e-3);
}

TEST_F(SoundMixTest, samplesThatAreNoNumbersDoNotSilenceTheOthers) {
  const fs::path bad =
      source("bad.mov", {.encoder = "pcm_f32le", .muxer = "mov", .wave = [](std::int64_t i, int) {
                           return i % 2 == 0 ? std::numeric_limits<float>::quiet_NaN()
                                             : std::numeric_limits<float>::infinity();
                         }});
  const fs::path good = source("good.m4a", {.wave = tone(440, 0.5F)});
  const Sound sound = mixed(
      {.sources = {{.clip = {.file = bad, .length = 1}}, {.clip = {.file = good, .length = 1}}},
       .duration = 1});
  EXPECT_NEAR(loudness(sound, 0.1, 0.9), 0.5 * std::sqrt(0.5), 0.01);
}

TEST_F(SoundMixTest, aMixWithoutSourcesIsSilent) {
  const Sound sound = mixed({.duration = 0.5});
  EXPECT_GE(sound.size(), 24'000U);
  EXPECT_LT(loudness(sound, 0, 0.5), 1e-6);
}

TEST_F(SoundMixTest, aDiskThatFillsUpIsNamedAndNothingRemains) {
  const fs::path file = source("a.m4a", {.seconds = 3, .wave = tone(440, 0.5F)});
  const SoundMix mix{.sources = {{.clip = {.file = file, .length = 3}}}, .duration = 3};
  for (const rlim_t room : {0, 5'000, 30'000}) {
    std::expected<void, MediaError> written;
    {
      const test::FileSizeLimit limit(room);
      written = mix.write(mix_);
    }
    ASSERT_FALSE(written) << room;
    EXPECT_EQ(written.error(),
              (MediaError{MediaError::Kind::diskFull, "“mix.m4a” 超过了允许的文件大小，没有写完"}));
    EXPECT_FALSE(fs::exists(mix_)) << room;
  }
}

TEST_F(SoundMixTest, aMissingFolderIsNamed) {
  const auto written = SoundMix{.duration = 1}.write(folder_ / "missing" / "mix.m4a");
  ASSERT_FALSE(written);
  EXPECT_EQ(written.error().kind, MediaError::Kind::writeFailed);
}

}  // namespace
}  // namespace vesk::media
