#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <iterator>
#include <limits>
#include <numeric>
#include <random>
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

/// Reads everything once, then from many places, and lets each be compared with the same place.
void compareSeeks(const fs::path& file, std::size_t length,
                  const std::function<void(const Sound& part, const Sound& same)>& compare) {
  constexpr std::size_t partLength = 3'000;
  const Sound whole = readAll(file, length);
  auto reader = SoundReader::open(file);
  ASSERT_TRUE(reader);
  std::mt19937 random(3);
  std::uniform_int_distribution<std::size_t> anywhere(0, length - partLength);
  std::vector<std::size_t> places{
      length - partLength, 0, 1, 1'023, 1'024, 2'048, 11'999, 12'000, 30'000};
  std::generate_n(std::back_inserter(places), 20, [&] { return anywhere(random); });
  for (const std::size_t place : places) {
    SCOPED_TRACE(file.filename().string() + " from " + std::to_string(place));
    reader->seek(static_cast<std::int64_t>(place));
    EXPECT_EQ(reader->position(), static_cast<std::int64_t>(place));
    Sound part(partLength, {9, 9});
    reader->read(part);
    const auto from = whole.begin() + static_cast<std::ptrdiff_t>(place);
    compare(part, Sound(from, from + partLength));
  }
}

void expectSeeksToMatch(const fs::path& file, std::size_t length) {
  compareSeeks(file, length,
               [](const Sound& part, const Sound& same) { EXPECT_TRUE(part == same); });
}

/// The mean of both sides over each millisecond: what is left of the sound below its noise.
std::vector<double> hum(const Sound& sound) {
  constexpr std::size_t length = soundRate / 1'000;
  std::vector<double> means;
  for (std::size_t at = 0; at + length <= sound.size(); at += length) {
    const auto part = std::span(sound).subspan(at, length);
    means.push_back(std::accumulate(part.begin(), part.end(), 0.0,
                                    [](double sum, const StereoSample& sample) {
                                      return sum + double{sample.left} + double{sample.right};
                                    }) /
                    (2 * length));
  }
  return means;
}

/// Of files whose sound has noise that the decoder makes up, and differently each time.
void expectSeeksToMatchButForNoise(const fs::path& file, std::size_t length) {
  compareSeeks(file, length, [](const Sound& part, const Sound& same) {
    EXPECT_THAT(hum(part), testing::Pointwise(testing::DoubleNear(2e-3), hum(same)));
  });
}

/// AAC of which every decoding gives the same.
SoundRecipe plainRecipe() {
  return {.encoderOptions = "aac_pns=0", .seconds = 3, .wave = tone(440, 0.5F)};
}

TEST(SoundReader, aSeekLeadsToTheSameSamplesAsReadingThere) {
  const TemporaryFolder folder;
  SoundRecipe recipe = plainRecipe();
  makeSound(folder / "aac.m4a", recipe);
  expectSeeksToMatch(folder / "aac.m4a", 140'000);
  recipe.channels = 2;
  makeSound(folder / "stereo.m4a", recipe);
  expectSeeksToMatch(folder / "stereo.m4a", 140'000);
  recipe = rawRecipe();
  recipe.seconds = 3;
  makeSound(folder / "raw.mov", recipe);
  expectSeeksToMatch(folder / "raw.mov", 140'000);
  recipe.encoder = "flac";
  recipe.muxer = "mp4";
  recipe.muxerOptions = "strict=experimental";
  makeSound(folder / "flac.mp4", recipe);
  expectSeeksToMatch(folder / "flac.mp4", 140'000);
}

TEST(SoundReader, aSeekKeepsToTheGridOfOtherRates) {
  const TemporaryFolder folder;
  for (const int rate : {8'000, 11'025, 22'050, 44'100, 96'000}) {
    const fs::path file = folder / (std::to_string(rate) + ".mov");
    SoundRecipe recipe = rawRecipe();
    recipe.rate = rate;
    recipe.seconds = 3;
    makeSound(file, recipe);
    expectSeeksToMatch(file, 140'000);
  }
  SoundRecipe recipe = plainRecipe();
  recipe.rate = 44'100;
  makeSound(folder / "aac.m4a", recipe);
  expectSeeksToMatch(folder / "aac.m4a", 140'000);
}

TEST(SoundReader, aSeekIsExactAlsoWhereStampsAreRounded) {
  const TemporaryFolder folder;
  constexpr std::int64_t unit = soundRate / 600;
  SoundRecipe recipe = plainRecipe();
  recipe.place = [](std::int64_t index) { return (index + unit / 2) / unit * unit; };
  makeSound(folder / "rounded.m4a", recipe);
  expectSeeksToMatch(folder / "rounded.m4a", 140'000);
}

TEST(SoundReader, aSeekInTheSampleTakeIsExactButForNoise) {
  const fs::path take = VESK_SAMPLE_TAKE;
  expectSeeksToMatchButForNoise(take / "screen.mov", 470'000);
  expectSeeksToMatchButForNoise(take / "mic.m4a", 470'000);
}

TEST(SoundReader, aSeekFindsItsPlaceBehindAGap) {
  const TemporaryFolder folder;
  SoundRecipe recipe = plainRecipe();
  recipe.place = [](std::int64_t index) {
    return index < 20 * 1'024 ? index + 4'800 : index + 9'600;
  };
  makeSound(folder / "torn.m4a", recipe);
  expectSeeksToMatch(folder / "torn.m4a", 150'000);
}

TEST(SoundReader, aSeekIntoAMovieOfFragmentsIsExact) {
  const TemporaryFolder folder;
  SoundRecipe recipe = plainRecipe();
  recipe.muxer = "mov";
  recipe.muxerOptions = "movflags=frag_keyframe+empty_moov";
  makeSound(folder / "torn.mov", recipe);
  expectSeeksToMatch(folder / "torn.mov", 140'000);
}

TEST(SoundReader, noiseThatTheDecoderMakesUpIsAsLoudAfterASeek) {
  const TemporaryFolder folder;
  std::mt19937 random(8);
  std::uniform_real_distribution<float> values(-0.3F, 0.3F);
  makeSound(folder / "noise.m4a",
            {.seconds = 3, .wave = [&](std::int64_t, int) { return values(random); }});
  const Sound whole = readAll(folder / "noise.m4a", 140'000);
  auto reader = SoundReader::open(folder / "noise.m4a");
  ASSERT_TRUE(reader);
  reader->seek(70'000);
  Sound part(48'000);
  reader->read(part);
  const Sound same(whole.begin() + 70'000, whole.begin() + 118'000);
  EXPECT_NEAR(loudness(part, 0, 1), loudness(same, 0, 1), 0.002);
}

TEST(SoundReader, aSeekBeyondTheEndsIsSilentOrTheBeginning) {
  const TemporaryFolder folder;
  makeSound(folder / "raw.mov", rawRecipe());
  auto reader = SoundReader::open(folder / "raw.mov");
  ASSERT_TRUE(reader);
  Sound part(100);
  reader->seek(std::numeric_limits<std::int64_t>::max());
  reader->read(part);
  EXPECT_TRUE(part == Sound(100));
  reader->seek(-5);
  EXPECT_EQ(reader->position(), 0);
  reader->read(part);
  EXPECT_EQ(part.front().left, ramp(0, 0));
}

TEST(SoundReader, aSeekInALongFileDecodesOnlyAMoment) {
  const TemporaryFolder folder;
  const fs::path file = folder / "long.m4a";
  makeSound(file, {.rate = 8'000, .seconds = 240, .wave = tone(440, 0.5F, 8'000)});
  using Clock = std::chrono::steady_clock;
  Sound part(1'024);
  auto reader = SoundReader::open(file);
  ASSERT_TRUE(reader);
  const auto start = Clock::now();
  reader->seek(std::int64_t{235} * soundRate);
  reader->read(part);
  const auto seeking = Clock::now() - start;
  EXPECT_GT(loudness(part, 0, 0.02), 0.3);
  readAll(file, std::size_t{235} * soundRate, 48'000);
  EXPECT_LT(seeking * 10, Clock::now() - start);
}

TEST(SoundReader, whatIsNoSoundBecomesSilence) {
  const TemporaryFolder folder;
  SoundRecipe recipe = rawRecipe();
  recipe.wave = [](std::int64_t index, int channel) {
    return index == 100   ? std::numeric_limits<float>::quiet_NaN()
           : index == 101 ? 1e30F
                          : ramp(index, channel);
  };
  makeSound(folder / "raw.mov", recipe);
  const Sound sound = readAll(folder / "raw.mov", 200);
  EXPECT_EQ(sound[100], StereoSample{});
  EXPECT_EQ(sound[101], StereoSample{});
  EXPECT_EQ(sound[102].left, ramp(102, 0));
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
