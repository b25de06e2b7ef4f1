#pragma once

#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <span>
#include <thread>
#include <vector>

#include "editor/SoundOutput.h"

// What every sound output keeps to. Instantiate the suite in this namespace, with a rig:
//   INSTANTIATE_TYPED_TEST_SUITE_P(PipeWire, SoundOutputContract, PipeWireRig);
namespace vesk::editor::contract {

using media::secondsOf;

/// A sound output, new for each test; it throws when it cannot be set up.
template <typename Rig>
concept SoundOutputRig = std::default_initializable<Rig> && requires(Rig rig) {
  { rig.output() } -> std::convertible_to<SoundOutput&>;
  { Rig::isAudible } -> std::convertible_to<bool>;  ///< whether it asks for samples, too
};

inline media::HostTime hostTime() {
  return std::chrono::steady_clock::now().time_since_epoch();
}

/// Whether it came true within ten seconds.
template <typename Condition>
[[nodiscard]] bool comesTrue(Condition condition) {
  const media::HostTime end = hostTime() + std::chrono::seconds{10};
  while (!condition()) {
    if (hostTime() > end) return false;
    std::this_thread::sleep_for(std::chrono::milliseconds{2});
  }
  return true;
}

/// Instants and what the output said of them.
struct Reading {
  double time = 0;
  double heard = 0;
};

inline std::vector<Reading> readings(const SoundOutput& output, std::chrono::milliseconds length) {
  std::vector<Reading> all;
  const media::HostTime end = hostTime() + length;
  for (media::HostTime now = hostTime(); now < end; now = hostTime()) {
    all.push_back({secondsOf(now), output.heard(now)});
    std::this_thread::sleep_for(std::chrono::milliseconds{5});
  }
  return all;
}

inline void expectNoStepBack(const std::vector<Reading>& all) {
  for (std::size_t i = 1; i < all.size(); ++i) {
    EXPECT_GE(all[i].heard, all[i - 1].heard);
  }
}

/// Seconds heard a second.
inline double pace(const std::vector<Reading>& all) {
  return (all.back().heard - all.front().heard) / (all.back().time - all.front().time);
}

template <SoundOutputRig Rig>
class SoundOutputContract : public ::testing::Test {
 protected:
  void start() {
    output_.start(
        [this](std::span<media::StereoSample> samples) { given_ += std::ssize(samples); });
  }
  bool hears(double seconds) {
    return comesTrue([&] { return output_.heard(hostTime()) > seconds; });
  }
  double secondsGiven() const { return static_cast<double>(given_) / media::soundRate; }

  std::atomic<std::int64_t> given_ = 0;
  Rig rig_;
  SoundOutput& output_ = rig_.output();
};
TYPED_TEST_SUITE_P(SoundOutputContract);

TYPED_TEST_P(SoundOutputContract, saysWhetherItIsAudible) {
  EXPECT_TRUE(comesTrue([&] { return this->output_.isAudible() == TypeParam::isAudible; }));
}

TYPED_TEST_P(SoundOutputContract, nothingIsHeardWithoutARun) {
  EXPECT_EQ(this->output_.heard(hostTime()), 0);
  this->output_.stop();
  EXPECT_EQ(this->output_.heard(hostTime()), 0);
  EXPECT_EQ(this->given_, 0);
}

TYPED_TEST_P(SoundOutputContract, timeRisesFromBelowZeroAtThePaceOfTheClock) {
  const media::HostTime before = hostTime();
  this->start();
  EXPECT_LE(this->output_.heard(before), 0);
  expectNoStepBack(readings(this->output_, std::chrono::milliseconds{300}));
  ASSERT_TRUE(this->hears(1.5)) << "settled";
  // A loaded machine makes the device itself stumble, but not each time.
  double error = 1;
  for (int attempt = 0; attempt < 5 && error > 0.005; ++attempt) {
    const auto all = readings(this->output_, std::chrono::milliseconds{2500});
    expectNoStepBack(all);
    error = std::abs(pace(all) - 1);
  }
  EXPECT_LE(error, 0.005);
  this->output_.stop();
}

TYPED_TEST_P(SoundOutputContract, asManySamplesAreTakenAsAreHeard) {
  this->start();
  ASSERT_TRUE(this->hears(1));
  const double heard = this->output_.heard(hostTime());
  if (TypeParam::isAudible) {
    EXPECT_GT(this->secondsGiven(), heard - 0.02);
    EXPECT_LT(this->secondsGiven(), heard + 0.5);
  } else {
    EXPECT_EQ(this->given_, 0);
  }
  this->output_.stop();
}

TYPED_TEST_P(SoundOutputContract, noSampleIsTakenAfterTheRun) {
  this->start();
  ASSERT_TRUE(this->hears(0.2));
  this->output_.stop();
  const std::int64_t given = this->given_;
  std::this_thread::sleep_for(std::chrono::milliseconds{150});
  EXPECT_EQ(this->given_, given);
  EXPECT_EQ(this->output_.heard(hostTime()), 0);
}

TYPED_TEST_P(SoundOutputContract, aRunCanFollowAtOnce) {
  for (int run = 0; run < 3; ++run) {
    const media::HostTime before = hostTime();
    this->given_ = 0;
    this->start();
    EXPECT_LE(this->output_.heard(before), 0);
    ASSERT_TRUE(this->hears(0.3));
    EXPECT_EQ(this->given_ > 0, TypeParam::isAudible);
    this->output_.stop();
  }
  this->start();
  this->output_.stop();
  this->start();
  EXPECT_TRUE(this->hears(0.3));
  this->output_.stop();
}

TYPED_TEST_P(SoundOutputContract, startAndStopDoNotWait) {
  for (int run = 0; run < 3; ++run) {
    const media::HostTime before = hostTime();
    this->start();
    const media::HostTime started = hostTime();
    EXPECT_LT(started - before, std::chrono::milliseconds{80});
    std::this_thread::sleep_for(std::chrono::milliseconds{60});
    const media::HostTime ending = hostTime();
    this->output_.stop();
    EXPECT_LT(hostTime() - ending, std::chrono::milliseconds{80});
  }
}

REGISTER_TYPED_TEST_SUITE_P(SoundOutputContract, saysWhetherItIsAudible, nothingIsHeardWithoutARun,
                            timeRisesFromBelowZeroAtThePaceOfTheClock,
                            asManySamplesAreTakenAsAreHeard, noSampleIsTakenAfterTheRun,
                            aRunCanFollowAtOnce, startAndStopDoNotWait);

}  // namespace vesk::editor::contract
