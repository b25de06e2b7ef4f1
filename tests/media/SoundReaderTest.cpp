#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <span>
#include <string>
#include <vector>

#include "media/SoundReader.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/TestSound.h"

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using Sound = std::vector<StereoSample>;

Sound readAll(const fs::path& file, std::size_t length, std::size_t block = 4096) {
  auto reader = SoundReader::open(file);
  if (!reader) {
    ADD_FAILURE() << reader.error().message;
    return {};
  }
  Sound sound(length, {9, 9});
  for (std::size_t at = 0; at < length; at += block) {
    reader->read(std::span(sound).subspan(at, std::min(block, length - at)));
  }
  return sound;
}

/// A wave of which every sample is another.
float ramp(std::int64_t index, int /*channel*/) {
  return static_cast<float>(index % 40'000 + 1) / 40'001;
}

SoundRecipe rawRecipe() {
  return {.encoder = "pcm_f32le", .muxer = "mov", .seconds = 0.5, .wave = ramp};
}

TEST(SoundReader, oneChannelIsInTheMiddleAsLoudAsItWasRecorded) {
  const TemporaryFolder folder;
  makeSound(folder / "raw.mov", rawRecipe());
  const Sound sound = readAll(folder / "raw.mov", 24'000);
  for (std::int64_t i = 0; i < 24'000; ++i) {
    const float value = ramp(i, 0);
    ASSERT_EQ(sound[static_cast<std::size_t>(i)], (StereoSample{value, value})) << i;
  }
}

TEST(SoundReader, twoChannelsStayWhereTheyAre) {
  const TemporaryFolder folder;
  SoundRecipe recipe = rawRecipe();
  recipe.channels = 2;
  recipe.wave = [](std::int64_t i, int channel) { return channel == 0 ? ramp(i, 0) : -0.5F; };
  makeSound(folder / "raw.mov", recipe);
  const Sound sound = readAll(folder / "raw.mov", 24'000);
  for (std::int64_t i = 0; i < 24'000; ++i) {
    ASSERT_EQ(sound[static_cast<std::size_t>(i)], (StereoSample{ramp(i, 0), -0.5F})) << i;
  }
}

TEST(SoundReader, theCentreOfSurroundIsHeardOnBothSides) {
  const TemporaryFolder folder;
  SoundRecipe recipe = rawRecipe();
  recipe.channels = 6;
  recipe.wave = [](std::int64_t, int channel) { return channel == 2 ? 0.5F : 0.0F; };
  makeSound(folder / "raw.mov", recipe);
  const Sound sound = readAll(folder / "raw.mov", 10'000);
  EXPECT_NEAR(sound[5'000].left, 0.5 * std::sqrt(0.5), 1e-4);
  EXPECT_EQ(sound[5'000].left, sound[5'000].right);
}

TEST(SoundReader, theSizeOfTheReadsDoesNotMatter) {
  const TemporaryFolder folder;
  makeSound(folder / "mic.m4a", {.seconds = 0.5, .wave = tone(500, 0.5F)});
  const Sound whole = readAll(folder / "mic.m4a", 30'000, 30'000);
  for (const std::size_t block : {1U, 37U, 1024U, 4096U}) {
    EXPECT_TRUE(readAll(folder / "mic.m4a", 30'000, block) == whole) << block;
  }
}

TEST(SoundReader, theStartUpOfTheEncoderIsLeftOut) {
  const TemporaryFolder folder;
  makeSound(folder / "mic.m4a", {.seconds = 1, .wave = beep(0.5)});
  EXPECT_NEAR(beepTime(readAll(folder / "mic.m4a", 48'000)), 0.5, 1e-4);
  const Sound heard = played(folder / "mic.m4a");
  EXPECT_TRUE(readAll(folder / "mic.m4a", heard.size()) == heard);
}

TEST(SoundReader, otherRatesKeepTheirTime) {
  const TemporaryFolder folder;
  for (const int rate : {8'000, 16'000, 44'100, 96'000}) {
    SoundRecipe recipe = rawRecipe();
    recipe.rate = rate;
    recipe.seconds = 2;
    recipe.wave = beep(1.25, 0.25F, rate);
    makeSound(folder / "raw.mov", recipe);
    const Sound sound = readAll(folder / "raw.mov", 96'000);
    EXPECT_NEAR(beepTime(sound), 1.25, 2e-4) << rate;
    EXPECT_NEAR(loudness(sound, 1.26, 1.34), 0.25 * std::sqrt(0.5), 0.002) << rate;
  }
}

TEST(SoundReader, aGapInTheStampsIsSilent) {
  const TemporaryFolder folder;
  SoundRecipe recipe{.seconds = 1, .wave = tone(440, 0.5F)};
  makeSound(folder / "whole.m4a", recipe);
  constexpr std::int64_t gapAt = 20 * 1024;
  constexpr std::int64_t gap = 4'800;
  recipe.place = [](std::int64_t index) { return index < gapAt ? index : index + gap; };
  makeSound(folder / "torn.m4a", recipe);
  const Sound whole = readAll(folder / "whole.m4a", 40'000);
  const Sound torn = readAll(folder / "torn.m4a", 40'000 + gap);
  EXPECT_TRUE(std::equal(whole.begin(), whole.begin() + gapAt, torn.begin()));
  EXPECT_TRUE(std::equal(whole.begin() + gapAt, whole.end(), torn.begin() + gapAt + gap));
  EXPECT_TRUE(std::all_of(torn.begin() + gapAt, torn.begin() + gapAt + gap,
                          [](const StereoSample& sample) { return sample == StereoSample{}; }));
}

TEST(SoundReader, aTrackThatStartsLateStartsLate) {
  const TemporaryFolder folder;
  SoundRecipe recipe = rawRecipe();
  recipe.place = [](std::int64_t index) { return index + 4'800; };
  makeSound(folder / "raw.mov", recipe);
  const Sound sound = readAll(folder / "raw.mov", 10'000);
  EXPECT_EQ(sound[4'799], StereoSample{});
  EXPECT_EQ(sound[4'800].left, ramp(0, 0));
}

TEST(SoundReader, roundedStampsDoNotTearTheSoundApart) {
  const TemporaryFolder folder;
  SoundRecipe recipe{.seconds = 1, .wave = tone(440, 0.5F)};
  makeSound(folder / "exact.m4a", recipe);
  constexpr std::int64_t unit = soundRate / 600;
  recipe.place = [](std::int64_t index) { return (index + unit / 2) / unit * unit; };
  makeSound(folder / "rounded.m4a", recipe);
  ASSERT_NE(storedSound(folder / "rounded.m4a").packets[3].pts,
            storedSound(folder / "exact.m4a").packets[3].pts);
  EXPECT_TRUE(readAll(folder / "rounded.m4a", 48'000) == readAll(folder / "exact.m4a", 48'000));
}

TEST(SoundReader, theSampleTakeHasNoHoles) {
  const Sound sound = readAll(fs::path(VESK_SAMPLE_TAKE) / "screen.mov", 470'000);
  std::size_t longestSilence = 0;
  std::size_t silence = 0;
  // What its first packet's rounded time hides is more than the packet holds.
  for (const StereoSample& sample : std::span(sound).subspan(16)) {
    silence = sample == StereoSample{} ? silence + 1 : 0;
    longestSilence = std::max(longestSilence, silence);
  }
  EXPECT_LT(longestSilence, 3U);
}

TEST(SoundReader, behindTheEndThereIsSilence) {
  const TemporaryFolder folder;
  makeSound(folder / "raw.mov", rawRecipe());
  const Sound sound = readAll(folder / "raw.mov", 100'000);
  EXPECT_TRUE(std::all_of(sound.begin() + 24'000, sound.end(),
                          [](const StereoSample& sample) { return sample == StereoSample{}; }));
}

TEST(SoundReader, damageInTheMiddleLeavesTheRestInPlace) {
  const TemporaryFolder folder;
  const fs::path file = folder / "mic.m4a";
  makeSound(file, {.seconds = 4, .wave = [](std::int64_t index, int channel) {
                     return tone(300, 0.1F)(index, channel) + beep(3)(index, channel);
                   }});
  std::string bytes = bytesOf(file);
  const std::size_t data = bytes.find("mdat") + 4;
  const std::size_t length = bytes.find("moov") - data;
  std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(data + length / 4), length / 8, '\xff');
  writeBytes(file, bytes);
  EXPECT_NEAR(beepTime(readAll(file, 192'000)), 3, 1e-3);
}

TEST(SoundReader, aFileWithoutSoundIsRefused) {
  const TemporaryFolder folder;
  makeMovie(folder / "silent.mov", {.ticks = evenTicks(5, 20)});
  const auto reader = SoundReader::open(folder / "silent.mov");
  ASSERT_FALSE(reader);
  EXPECT_EQ(reader.error(), (MediaError{MediaError::Kind::openFailed, "“silent.mov” 里没有声音"}));
}

}  // namespace
}  // namespace vesk::media
