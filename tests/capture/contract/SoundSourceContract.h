#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <concepts>
#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <vector>

#include "capture/Clock.h"
#include "capture/SoundSource.h"
#include "capture/contract/Heard.h"
#include "media/StereoSample.h"

// What every sound source keeps to. Instantiate the suite in this namespace, with a rig:
//   INSTANTIATE_TYPED_TEST_SUITE_P(PipeWireMicrophone, SoundSourceContract, MicrophoneRig);
namespace vesk::capture::contract {

/// A sound source, what it hears, and the hand that breaks it. One is made for each test, silent;
/// it throws when it cannot be set up. An action may return before it is heard.
template <typename Rig>
concept SoundSourceRig = std::default_initializable<Rig> && requires(Rig rig, double frequency) {
  { rig.source() } -> std::convertible_to<SoundSource&>;
  rig.playTone(frequency);  ///< Hz, at a quarter of full scale or more, until told otherwise
  rig.playNothing();        ///< goes on in silence
  /// Takes away what the source cannot do without, such as the sound server.
  rig.breakDown();
};

/// A block that outlives its callback.
struct HeardBlock {
  media::HostTime stamp{};
  std::optional<std::int64_t> position;
  std::vector<float> samples;
};

template <SoundSourceRig Rig>
class SoundSourceContract : public ::testing::Test {
 protected:
  static constexpr double tone = 1000;

  auto listen(Heard<HeardBlock>& blocks) {
    return rig_.source().listen(
        [&blocks](const media::SoundBlock& block) {
          blocks.add({.stamp = block.stamp,
                      .position = block.position,
                      .samples = {block.samples.begin(), block.samples.end()}});
        },
        [this](const BackendError& error) { ends_.add(error); });
  }

  /// Whether a block is as loud as the tone and crosses zero as often.
  auto isTone() {
    return [channels = rig_.source().channels()](const HeardBlock& block) {
      const auto step = static_cast<std::size_t>(channels);
      int crossings = 0;
      float loudest = 0;
      for (std::size_t i = step; i < block.samples.size(); i += step) {
        loudest = std::max(loudest, std::abs(block.samples[i]));
        if (block.samples[i - step] < 0 && block.samples[i] >= 0) ++crossings;
      }
      const double seconds = static_cast<double>(block.samples.size() / step) / media::soundRate;
      return loudest > 0.1F && std::abs(crossings - tone * seconds) <= 2;
    };
  }

  static bool isSilent(const HeardBlock& block) {
    return std::ranges::all_of(block.samples,
                               [](float sample) { return std::abs(sample) < 0.001F; });
  }

  Rig rig_;
  Heard<BackendError> ends_;
  Heard<HeardBlock> blocks_;
};
TYPED_TEST_SUITE_P(SoundSourceContract);

TYPED_TEST_P(SoundSourceContract, theDeviceHasAName) {
  EXPECT_TRUE(comesTrue([&] { return this->rig_.source().deviceName().has_value(); }));
  EXPECT_NE(this->rig_.source().deviceName(), "");
}

TYPED_TEST_P(SoundSourceContract, blocksHoldWholeInstantsInTheOrderOfTheirTime) {
  const auto channels = static_cast<std::size_t>(this->rig_.source().channels());
  ASSERT_GE(channels, 1U);
  this->rig_.playTone(this->tone);
  const auto listening = this->listen(this->blocks_);
  ASSERT_TRUE(listening.has_value()) << listening.error().message;
  ASSERT_TRUE(this->blocks_.comesTo(10));
  const auto blocks = this->blocks_.all();
  for (std::size_t i = 0; i < blocks.size(); ++i) {
    EXPECT_FALSE(blocks[i].samples.empty());
    EXPECT_EQ(blocks[i].samples.size() % channels, 0U);
    if (i == 0) continue;
    const auto& before = blocks[i - 1];
    EXPECT_GT(blocks[i].stamp, before.stamp);
    if (!blocks[i].position || !before.position) continue;
    const auto length = static_cast<std::int64_t>(before.samples.size() / channels);
    EXPECT_GE(*blocks[i].position, *before.position + length);
  }
}

TYPED_TEST_P(SoundSourceContract, stampsAreOfTheMonotonicClock) {
  const MonotonicClock clock;
  this->rig_.playTone(this->tone);
  const double before = clock.now();
  {
    const auto listening = this->listen(this->blocks_);
    ASSERT_TRUE(listening.has_value()) << listening.error().message;
    ASSERT_TRUE(this->blocks_.comesTo(5));
  }
  const double after = clock.now();
  for (const auto& block : this->blocks_.all()) {
    const double seconds = std::chrono::duration<double>{block.stamp}.count();
    EXPECT_GE(seconds, before - 0.5);
    EXPECT_LE(seconds, after + 0.1);
  }
}

TYPED_TEST_P(SoundSourceContract, aToneIsHeardWhileItPlays) {
  const auto listening = this->listen(this->blocks_);
  ASSERT_TRUE(listening.has_value()) << listening.error().message;
  this->rig_.playTone(this->tone);
  ASSERT_TRUE(this->blocks_.has(this->isTone()));
  this->rig_.playNothing();
  EXPECT_TRUE(this->blocks_.has(this->isSilent, this->blocks_.count()));
}

TYPED_TEST_P(SoundSourceContract, whoHasEndedListeningHearsNothing) {
  Heard<HeardBlock> others;
  this->rig_.playTone(this->tone);
  const auto other = this->listen(others);
  auto listening = this->listen(this->blocks_);
  ASSERT_TRUE(other && listening);
  ASSERT_TRUE(this->blocks_.comesTo(2));
  listening->reset();
  const auto count = this->blocks_.count();
  ASSERT_TRUE(others.comesTo(others.count() + 5));
  EXPECT_EQ(this->blocks_.count(), count);
  EXPECT_EQ(this->ends_.count(), 0U);
}

TYPED_TEST_P(SoundSourceContract, aSourceThatBreaksDownSaysSoOnce) {
  this->rig_.playTone(this->tone);
  const auto listening = this->listen(this->blocks_);
  ASSERT_TRUE(listening.has_value()) << listening.error().message;
  ASSERT_TRUE(this->blocks_.comesTo(1));
  this->rig_.breakDown();
  ASSERT_TRUE(this->ends_.comesTo(1));
  EXPECT_FALSE(this->ends_.all().front().message.empty());
  EXPECT_EQ(this->ends_.count(), 1U);
}

REGISTER_TYPED_TEST_SUITE_P(SoundSourceContract, theDeviceHasAName,
                            blocksHoldWholeInstantsInTheOrderOfTheirTime,
                            stampsAreOfTheMonotonicClock, aToneIsHeardWhileItPlays,
                            whoHasEndedListeningHearsNothing, aSourceThatBreaksDownSaysSoOnce);

}  // namespace vesk::capture::contract
