#include <gtest/gtest.h>

#include <atomic>
#include <chrono>
#include <thread>
#include <vector>

#include "editor/OutputRun.h"

namespace vesk::editor {
namespace {

using media::StereoSample;
using std::chrono::milliseconds;

constexpr media::HostTime start = std::chrono::hours{30};
constexpr std::size_t block = 480;
constexpr milliseconds blockTime{10};
constexpr milliseconds delay{30};

/// A device that takes a block each 10 ms, which is heard 30 ms later.
class Device {
 public:
  explicit Device(OutputRun& run) : run_{run} {}

  std::vector<StereoSample> take() {
    std::vector<StereoSample> samples(block, StereoSample{9, 9});
    run_.take(samples, now, now + delay);
    now += blockTime;
    return samples;
  }

  media::HostTime now = start;

 private:
  OutputRun& run_;
};

/// Counts the samples it gives.
SoundOutput::Fill counter(float& next) {
  return [&next](std::span<StereoSample> samples) {
    for (StereoSample& sample : samples) sample = {next++, 0};
  };
}

double millisecondsOf(double seconds) {
  return seconds * 1000;
}

TEST(OutputRun, withoutARunThereIsSilenceAndNoTime) {
  OutputRun run;
  Device device{run};
  EXPECT_EQ(device.take(), std::vector<StereoSample>(block));
  EXPECT_EQ(run.heard(start), 0);
}

TEST(OutputRun, givesSampleAfterSampleAndTellsWhenTheyAreHeard) {
  OutputRun run;
  Device device{run};
  float next = 0;
  run.start(counter(next), start);
  for (int i = 0; i < 100; ++i) {
    const auto samples = device.take();
    EXPECT_EQ(samples.front().left, static_cast<float>(i * 480));
    EXPECT_EQ(samples.back().left, static_cast<float>(i * 480 + 479));
  }
  EXPECT_NEAR(millisecondsOf(run.heard(device.now)), 1000 - 30, 0.01);
}

TEST(OutputRun, beginsAnewWithEachRun) {
  OutputRun run;
  Device device{run};
  float next = 0;
  run.start(counter(next), start);
  for (int i = 0; i < 50; ++i) device.take();
  run.stop();
  EXPECT_EQ(run.heard(device.now), 0);
  EXPECT_EQ(device.take(), std::vector<StereoSample>(block));
  next = 0;
  run.start(counter(next), device.now);
  EXPECT_LT(run.heard(device.now), 0);
  EXPECT_EQ(device.take().front().left, 0);
  EXPECT_NEAR(millisecondsOf(run.heard(device.now)), 10 - 30, 0.01);
}

TEST(OutputRun, leavesOutWhatADeviceThatStoodStillIsTooLateFor) {
  OutputRun run;
  Device device{run};
  float next = 0;
  run.start(counter(next), start);
  for (int i = 0; i < 50; ++i) device.take();
  device.now += std::chrono::seconds{5};
  for (int i = 0; i < 20; ++i) device.take();
  const double heard = run.heard(device.now);
  EXPECT_NEAR(millisecondsOf(heard), 500 + 5000 + 200 - 30, 0.1) << "time went on";
  EXPECT_NEAR(next / media::soundRate, heard + 0.03, 0.001) << "and the sound is with it";
}

TEST(OutputRun, aDeviceThatComesLateBeginsWhereTheClockIs) {
  OutputRun run;
  Device device{run};
  float next = 0;
  run.start(counter(next), start);
  device.now += std::chrono::seconds{3};
  for (int i = 0; i < 20; ++i) device.take();
  EXPECT_NEAR(run.heard(device.now), 3.2 - HeardClock::longestStart, 0.001);
  EXPECT_NEAR(next / media::soundRate, run.heard(device.now) + 0.03, 0.001);
}

TEST(OutputRun, followsADeviceThatIsALittleLateAndLeavesNothingOut) {
  OutputRun run;
  Device device{run};
  float next = 0;
  run.start(counter(next), start);
  for (int i = 0; i < 50; ++i) device.take();
  device.now += milliseconds{40};
  for (int i = 0; i < 1000; ++i) device.take();
  EXPECT_EQ(next, 1050 * 480);
  EXPECT_NEAR(millisecondsOf(run.heard(device.now)), 10'500 - 30, 0.1);
}

TEST(OutputRun, stopWaitsForTheCallThatRuns) {
  OutputRun run;
  std::atomic<bool> isRunning = false;
  std::atomic<bool> isCalled = false;
  std::atomic<bool> isOver = false;
  run.start(
      [&](std::span<StereoSample>) {
        EXPECT_TRUE(isRunning);
        isCalled = true;
        std::this_thread::sleep_for(milliseconds{1});
      },
      start);
  isRunning = true;
  std::thread device{[&] {
    Device taker{run};
    while (!isOver) taker.take();
  }};
  while (!isCalled) std::this_thread::yield();
  run.stop();
  isRunning = false;
  std::this_thread::sleep_for(milliseconds{20});
  isOver = true;
  device.join();
}

}  // namespace
}  // namespace vesk::editor
