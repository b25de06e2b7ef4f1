#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <csignal>
#include <cstdlib>
#include <mutex>
#include <optional>

#include "capture/pipewire/HeardSound.h"
#include "capture/pipewire/Microphone.h"
#include "capture/pipewire/PipeWireCamera.h"
#include "capture/pipewire/SystemSound.h"
#include "capture/pipewire/TestSoundServer.h"
#include "capture/x11/ChildProgram.h"
#include "capture/x11/Eventually.h"
#include "media/StereoSample.h"

namespace vesk::capture::pipewire::test {
namespace {

using x11::test::ChildProgram;
using x11::test::eventually;

constexpr media::HostTime period = std::chrono::milliseconds{600};

/// How far behind a beat of the clock the first beep begins that has silence before it, in seconds.
std::optional<double> latenessOfABeep(const HeardSound& heard, int channels) {
  std::optional<media::HostTime> lastSound;
  for (const auto& block : heard.blocks()) {
    for (std::size_t index = 0; index < block.samples.size(); ++index) {
      if (std::abs(block.samples[index]) < 0.01F) continue;
      const auto time =
          block.stamp + std::chrono::nanoseconds{static_cast<std::int64_t>(
                            1e9 * static_cast<double>(index) / channels / media::soundRate)};
      if (lastSound && time - *lastSound > period / 2) {
        const double phase = std::chrono::duration<double>(time % period).count();
        const double whole = std::chrono::duration<double>(period).count();
        return phase > whole / 2 ? phase - whole : phase;
      }
      lastSound = time;
    }
  }
  return std::nullopt;
}

TEST(VirtualDevices, beepAndLightUpAtTheSameMoments) {
  TestSoundServer server;
  const ChildProgram program{
      {VESK_VIRTUAL_DEVICES, "--remote", server.remote(), "--period", "0.6", "--length", "0.1"}};
  SystemSound system{server.remote()};
  Microphone microphone{server.remote()};
  PipeWireCamera cameras{server.remote()};
  ASSERT_TRUE(eventually([&] {
    return system.deviceName() && microphone.deviceName() && !cameras.devices().empty();
  }));
  const HeardSound played{system};
  const HeardSound spoken{microphone};
  std::mutex mutex;
  std::optional<media::HostTime> dark;
  std::optional<media::HostTime> lit;
  const auto looking = cameras.listen(
      cameras.devices().front(), {1280, 720},
      [&](const CameraFrame& frame) {
        const std::scoped_lock lock{mutex};
        if (frame.pixels.data[0] == 0) {
          dark = frame.stamp;
        } else if (dark && !lit) {
          lit = frame.stamp;
        }
      },
      [](const auto&) {});
  ASSERT_TRUE(looking);
  ASSERT_TRUE(eventually([&] {
    const std::scoped_lock lock{mutex};
    return lit && latenessOfABeep(played, 2) && latenessOfABeep(spoken, 1);
  }));
  EXPECT_NEAR(*latenessOfABeep(played, 2), 0, 0.022);
  EXPECT_NEAR(*latenessOfABeep(spoken, 1), 0, 0.003);
  const std::scoped_lock lock{mutex};
  EXPECT_LT(*lit % period, std::chrono::milliseconds{100}) << "a flash is seen while it lasts";
  program.send(SIGTERM);
}

TEST(VirtualDevices, refuseAnOptionThatNobodyKnows) {
  EXPECT_EQ((ChildProgram{{VESK_VIRTUAL_DEVICES, "--volume", "11"}}.finish()), EXIT_FAILURE);
}

}  // namespace
}  // namespace vesk::capture::pipewire::test
