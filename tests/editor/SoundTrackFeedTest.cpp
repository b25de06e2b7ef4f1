#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <functional>
#include <limits>
#include <string>
#include <thread>
#include <vector>

#include "editor/Allocations.h"
#include "editor/SoundTrackFeed.h"
#include "media/PeakLimiter.h"
#include "media/SoundReader.h"
#include "media/TemporaryFolder.h"
#include "media/TestSound.h"

namespace vesk::editor {
namespace {

using media::SoundClip;
using media::soundRate;
using media::StereoSample;
using Sound = std::vector<StereoSample>;
using std::chrono::milliseconds;

/// Every sample of the first second is another.
float ramp(std::int64_t index, int /*channel*/) {
  return static_cast<float>(index % 48'000 + 1) / 96'000;
}

class SoundTrackFeedTest : public testing::Test {
 protected:
  SoundClip clip(const std::string& name, const std::function<float(std::int64_t, int)>& wave,
                 double start = 0, double length = 4) {
    media::makeSound(folder_ / name,
                     {.encoder = "pcm_f32le", .muxer = "mov", .seconds = length, .wave = wave});
    return {.file = folder_ / name, .start = start, .length = length};
  }

  media::TemporaryFolder folder_;
};

void moveTo(SoundTrackFeed& feed, double time) {
  feed.seek(time);
  feed.waitForSound();
}

/// Reads as an output does, but faster; gives the decoder the time it needs.
Sound readSlowly(SoundTrackFeed& feed, std::size_t length, std::size_t block = 1024) {
  Sound sound(length, {9, 9});
  for (std::size_t at = 0; at < length; at += block) {
    feed.read(std::span(sound).subspan(at, std::min(block, length - at)));
    std::this_thread::sleep_for(milliseconds{3});
  }
  return sound;
}

float largestStep(const Sound& sound) {
  float largest = 0;
  for (std::size_t i = 1; i < sound.size(); ++i) {
    largest = std::max(largest, std::abs(sound[i].left - sound[i - 1].left));
  }
  return largest;
}

bool isSilent(const Sound& sound) {
  return std::ranges::all_of(sound,
                             [](const StereoSample& each) { return each == StereoSample{}; });
}

TEST_F(SoundTrackFeedTest, oneClipPassesBitForBit) {
  SoundTrackFeed feed{{clip("a.mov", ramp)}};
  moveTo(feed, 0);
  const Sound sound = readSlowly(feed, 4 * soundRate + 5'000);
  for (std::int64_t i = 0; i < 4 * soundRate; ++i) {
    ASSERT_EQ(sound[static_cast<std::size_t>(i)].left, ramp(i, 0)) << i;
  }
  EXPECT_TRUE(isSilent({sound.begin() + 4 * soundRate, sound.end()})) << "behind the end";
}

TEST_F(SoundTrackFeedTest, theSizeOfTheReadsDoesNotMatter) {
  for (const std::size_t block : {64U, 333U, 4096U}) {
    SoundTrackFeed feed{{clip("a.mov", ramp)}};
    moveTo(feed, 0.5);
    const Sound sound = readSlowly(feed, 10'000, block);
    for (std::int64_t i = 0; i < 10'000; ++i) {
      ASSERT_EQ(sound[static_cast<std::size_t>(i)].left, ramp(24'000 + i, 0)) << block << " " << i;
    }
  }
}

TEST_F(SoundTrackFeedTest, aSeekIsExactToTheSample) {
  SoundTrackFeed feed{{clip("a.mov", ramp)}};
  for (const double time : {1.0, 0.25, 2.0 + 1.0 / soundRate, 0.0, 3.5, 0.123}) {
    moveTo(feed, time);
    Sound sound(2'000);
    feed.read(sound);
    const auto first = std::llround(time * soundRate);
    EXPECT_EQ(sound.front().left, ramp(first, 0)) << time;
    EXPECT_EQ(sound.back().left, ramp(first + 1'999, 0)) << time;
  }
}

TEST_F(SoundTrackFeedTest, aSeekOutOfRangeIsTheNearestOrSilence) {
  SoundTrackFeed feed{{clip("a.mov", ramp)}};
  for (const double time : {-3.0, std::numeric_limits<double>::quiet_NaN()}) {
    moveTo(feed, time);
    Sound sound(100);
    feed.read(sound);
    EXPECT_EQ(sound.front().left, ramp(0, 0));
  }
  for (const double time : {4.0, 1e6, std::numeric_limits<double>::infinity()}) {
    moveTo(feed, time);
    Sound sound(100, {9, 9});
    feed.read(sound);
    EXPECT_TRUE(isSilent(sound)) << time;
  }
}

TEST_F(SoundTrackFeedTest, aClipStandsToTheSampleWhereItStarts) {
  constexpr std::int64_t first = 12'345;
  SoundClip late = clip("a.mov", ramp, static_cast<double>(first) / soundRate);
  late.length = 0.5;
  SoundTrackFeed feed{{late}};
  moveTo(feed, 0);
  const Sound sound = readSlowly(feed, soundRate);
  EXPECT_EQ(sound[first - 1], StereoSample{});
  EXPECT_EQ(sound[first].left, ramp(0, 0));
  EXPECT_EQ(sound[first + 23'999].left, ramp(23'999, 0));
  EXPECT_EQ(sound[first + 24'000], StereoSample{}) << "its length is over";
  moveTo(feed, 0.5);
  Sound middle(10);
  feed.read(middle);
  EXPECT_EQ(middle.front().left, ramp(24'000 - first, 0));
}

TEST_F(SoundTrackFeedTest, mixesAndLimitsAsAnExportDoes) {
  const SoundClip one = clip("a.mov", media::tone(300, 0.9F));
  const SoundClip two = clip("b.mov", media::tone(440, 0.8F), 0.1);
  SoundTrackFeed feed{{one, two}};
  feed.setGain(0, 1.5);
  feed.setGain(1, 0.5);
  moveTo(feed, 0);
  const Sound sound = readSlowly(feed, soundRate);

  Sound first(soundRate + 1'000);
  Sound second(soundRate + 1'000 - 4'800);
  media::SoundReader::open(one.file)->read(first);
  media::SoundReader::open(two.file)->read(second);
  for (std::size_t i = 0; i < first.size(); ++i) {
    first[i] = {1.5F * first[i].left, 1.5F * first[i].right};
    if (i < 4'800) continue;
    first[i].left += 0.5F * second[i - 4'800].left;
    first[i].right += 0.5F * second[i - 4'800].right;
  }
  Sound expected;
  media::PeakLimiter limiter;
  limiter.push(first, expected);
  expected.resize(soundRate);
  EXPECT_TRUE(sound == expected);
  EXPECT_LE(std::ranges::max(sound, {}, &StereoSample::left).left, 1.0F);
}

TEST_F(SoundTrackFeedTest, aGainThatChangesWhilePlayingMakesNoClickAndIsThereWithin10Ms) {
  SoundTrackFeed feed{{clip("a.mov", media::tone(100, 0.3F))}};
  moveTo(feed, 0);
  const float step = largestStep(readSlowly(feed, 24'000));
  feed.setGain(0, 2);
  Sound up = readSlowly(feed, 24'000);
  feed.setGain(0, 0);
  Sound down = readSlowly(feed, 24'000);
  // At most the doubled signal's own step, and the slide over 10 ms.
  constexpr float slide = 0.3F * 2 / 480;
  EXPECT_LE(largestStep(up), 2 * step + slide);
  EXPECT_LE(largestStep(down), 2 * step + slide);
  const double full = media::loudness(up, 0.1, 0.5);
  EXPECT_NEAR(full, 0.6 * std::sqrt(0.5), 0.005);
  // Samples that the limiter held back when the gain changed come first.
  EXPECT_TRUE(isSilent({down.begin() + 480 + 256, down.end()}));
  EXPECT_NEAR(media::loudness(up, 0.02, 0.1), full, 0.01);
}

TEST_F(SoundTrackFeedTest, gainsOutOfRangeCountAsTheNearestAndNoNumberAsOne) {
  SoundTrackFeed feed{{clip("a.mov", [](auto, auto) { return 0.25F; })}};
  const std::vector<std::pair<double, float>> cases{
      {2.5, 0.5F},
      {-1, 0},
      {1e30, 0.5F},
      {std::numeric_limits<double>::infinity(), 0.5F},
      {0.5, 0.125F},
      {-1e30, 0},
      {std::numeric_limits<double>::quiet_NaN(), 0.25F}};
  for (const auto& [gain, expected] : cases) {
    feed.setGain(0, gain);
    moveTo(feed, 1);
    Sound sound(10);
    feed.read(sound);
    EXPECT_EQ(sound.front().left, expected) << gain;
  }
}

TEST_F(SoundTrackFeedTest, aGainThatIsSetBeforeTheFirstReadIsThereAtOnce) {
  SoundTrackFeed feed{{clip("a.mov", [](auto, auto) { return 0.25F; })}};
  for (const double gain : {0.5, 2.0}) {
    moveTo(feed, 1);
    feed.setGain(0, gain);
    Sound sound(10);
    feed.read(sound);
    EXPECT_EQ(sound.front().left, static_cast<float>(gain * 0.25));
  }
}

TEST_F(SoundTrackFeedTest, aMoveForgetsHowLoudItWas) {
  const auto loudAtFirst = [](std::int64_t index, int) { return index < soundRate ? 0.9F : 0.1F; };
  SoundTrackFeed feed{{clip("a.mov", loudAtFirst)}};
  feed.setGain(0, 2);
  moveTo(feed, 0.5);
  Sound sound(2'000);
  feed.read(sound);
  EXPECT_LE(sound.back().left, 1);
  moveTo(feed, 1.5);
  feed.read(sound);
  for (const StereoSample& sample : sound) ASSERT_EQ(sample.left, 0.2F);
}

TEST_F(SoundTrackFeedTest, readingAllocatesNothing) {
  SoundTrackFeed feed{
      {clip("a.mov", media::tone(300, 0.9F)), clip("b.mov", media::tone(440, 0.8F))}};
  feed.setGain(0, 2);  // so that there is something to limit
  Sound block(8'192);
  for (const double time : {0.0, 1.5, 0.25}) {
    moveTo(feed, time);
    const std::int64_t before = allocationsOfThisThread();
    for (int reads = 0; reads < 3; ++reads) feed.read(block);
    EXPECT_EQ(allocationsOfThisThread(), before) << time;
  }
}

TEST_F(SoundTrackFeedTest, whatTheDecoderIsLateForIsLeftOutAndTheRestStaysInPlace) {
  SoundTrackFeed feed{{clip("a.mov", ramp)}};
  moveTo(feed, 0);
  Sound hasty(5 * soundRate / 2);
  feed.read(hasty);  // far more than is decoded
  EXPECT_EQ(hasty.front().left, ramp(0, 0));
  EXPECT_EQ(hasty.back(), StereoSample{});
  std::this_thread::sleep_for(milliseconds{100});
  Sound later(1'000);
  feed.read(later);
  EXPECT_EQ(later.back().left, ramp(5 * soundRate / 2 + 999, 0));
}

TEST_F(SoundTrackFeedTest, aClipThatCannotBeReadIsSilent) {
  SoundTrackFeed feed{
      {{.file = folder_ / "none.mov", .start = 0, .length = 4}, clip("a.mov", ramp)}};
  moveTo(feed, 0);
  const Sound sound = readSlowly(feed, 5'000);
  EXPECT_EQ(sound[4'000].left, ramp(4'000, 0));
}

TEST_F(SoundTrackFeedTest, withoutClipsThereIsSilence) {
  SoundTrackFeed feed{{}};
  moveTo(feed, 3);
  EXPECT_TRUE(isSilent(readSlowly(feed, 3'000)));
}

TEST_F(SoundTrackFeedTest, endsPromptlyWhateverItDoes) {
  const SoundClip sound = clip("a.mov", ramp);
  for (int i = 0; i < 20; ++i) {
    const auto start = std::chrono::steady_clock::now();
    {
      SoundTrackFeed feed{{sound}};
      if (i % 2 == 0) feed.seek(0.1 * i);
    }
    EXPECT_LT(std::chrono::steady_clock::now() - start, milliseconds{300});
  }
}

TEST_F(SoundTrackFeedTest, readsAndGainsMayComeFromDifferentThreads) {
  SoundTrackFeed feed{{clip("a.mov", ramp), clip("b.mov", ramp)}};
  moveTo(feed, 0);
  std::jthread player{[&](const std::stop_token& stop) {
    Sound block(512);
    while (!stop.stop_requested()) feed.read(block);
  }};
  for (int i = 0; i < 200; ++i) {
    feed.setGain(static_cast<std::size_t>(i % 2), i * 0.01);
    std::this_thread::yield();
  }
  player.request_stop();
  player.join();
  feed.setGain(0, 1);
  feed.setGain(1, 0);
  moveTo(feed, 0.5);
  Sound sound(10);
  feed.read(sound);
  EXPECT_EQ(sound.front().left, ramp(24'000, 0));
}

}  // namespace
}  // namespace vesk::editor
