#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <chrono>
#include <optional>
#include <thread>

#include "capture/pipewire/HeardSound.h"
#include "capture/pipewire/Microphone.h"
#include "capture/pipewire/SoundChecks.h"
#include "capture/pipewire/SoundGenerator.h"
#include "capture/pipewire/TestSoundServer.h"
#include "capture/pipewire/VirtualSink.h"
#include "capture/x11/Eventually.h"

namespace vesk::capture::pipewire::test {
namespace {

using std::chrono::milliseconds;
using testing::ElementsAre;
using testing::IsEmpty;
using x11::test::eventually;

class MicrophoneOfATestServer : public testing::Test {
 protected:
  bool isDefault(const std::string& description) {
    return eventually([&] { return microphone_.deviceName() == description; });
  }
  static bool hears(const HeardSound& heard, double frequency) {
    return eventually(
        [&] { return shareOfTone(heard.firstChannel(), frequency).value_or(0) > 0.99; });
  }

  TestSoundServer server_;
  Microphone microphone_{server_.remote()};
};

TEST_F(MicrophoneOfATestServer, refusesWhereThereIsNone) {
  const VirtualSink sink{server_.remote(), "sink", "音箱"};
  std::this_thread::sleep_for(milliseconds{200});
  EXPECT_EQ(microphone_.deviceName(), std::nullopt) << "what a sink plays is no microphone";
  const auto listening = microphone_.listen([](const auto&) {}, [](const auto&) {});
  ASSERT_FALSE(listening);
  EXPECT_EQ(listening.error().message, "找不到可用的麦克风");
}

TEST_F(MicrophoneOfATestServer, hearsOneChannelAtItsLevel) {
  const SoundGenerator device{server_.remote(), SoundGenerator::Microphone{"one", "话筒"},
                              tone(440)};
  ASSERT_TRUE(isDefault("话筒"));
  const HeardSound heard{microphone_};
  EXPECT_EQ(microphone_.channels(), 1);
  ASSERT_TRUE(hears(heard, 440));
  EXPECT_NEAR(*std::ranges::max_element(heard.blocks().back().samples), 0.5F, 0.01F);
}

TEST_F(MicrophoneOfATestServer, stampsSoundByTheTimeWhenItReachedTheDevice) {
  const SoundGenerator device{server_.remote(), SoundGenerator::Microphone{"one", "话筒"},
                              secondRamp()};
  ASSERT_TRUE(isDefault("话筒"));
  const HeardSound heard{microphone_};
  ASSERT_TRUE(eventually([&] { return heard.blocks().size() > 100; }));
  expectGoodTimes(heard.blocks(), 1);
  EXPECT_LT(worstStampError(heard.blocks()), 0.002);
}

TEST_F(MicrophoneOfATestServer, followsTheDefaultDevice) {
  const SoundGenerator low{server_.remote(), SoundGenerator::Microphone{"low", "低"}, tone(440)};
  const SoundGenerator high{server_.remote(), SoundGenerator::Microphone{"high", "高"}, tone(2000)};
  server_.setDefaultSource("low");
  ASSERT_TRUE(isDefault("低"));
  const HeardSound heard{microphone_};
  ASSERT_TRUE(hears(heard, 440));
  server_.setDefaultSource("high");
  EXPECT_TRUE(hears(heard, 2000));
  EXPECT_THAT(heard.ends(), IsEmpty());
}

TEST_F(MicrophoneOfATestServer, endsWithItsLastDevice) {
  std::optional<SoundGenerator> device{std::in_place, server_.remote(),
                                       SoundGenerator::Microphone{"one", "话筒"}, tone(440)};
  ASSERT_TRUE(isDefault("话筒"));
  const HeardSound heard{microphone_};
  ASSERT_TRUE(eventually([&] { return !heard.blocks().empty(); }));
  device.reset();
  ASSERT_TRUE(eventually([&] { return !heard.ends().empty(); }));
  std::this_thread::sleep_for(milliseconds{100});
  EXPECT_THAT(heard.ends(), ElementsAre("麦克风已断开"));
}

TEST_F(MicrophoneOfATestServer, doesNotWaitForAServerThatStandsStill) {
  server_.freeze();
  const auto begin = std::chrono::steady_clock::now();
  EXPECT_EQ(microphone_.deviceName(), std::nullopt);
  EXPECT_FALSE(microphone_.listen([](const auto&) {}, [](const auto&) {}));
  EXPECT_LT(std::chrono::steady_clock::now() - begin, std::chrono::seconds{4});
}

}  // namespace
}  // namespace vesk::capture::pipewire::test
