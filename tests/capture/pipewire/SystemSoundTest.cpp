#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <optional>
#include <thread>

#include "capture/pipewire/HeardSound.h"
#include "capture/pipewire/SoundChecks.h"
#include "capture/pipewire/SoundGenerator.h"
#include "capture/pipewire/SystemSound.h"
#include "capture/pipewire/TestSoundServer.h"
#include "capture/pipewire/VirtualSink.h"
#include "capture/x11/Eventually.h"
#include "media/StereoSample.h"

namespace vesk::capture::pipewire::test {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using x11::test::eventually;

class SystemSoundOfATestServer : public testing::Test {
 protected:
  bool hears(const HeardSound& heard, double frequency) {
    return eventually(
        [&] { return shareOfTone(heard.firstChannel(), frequency).value_or(0) > 0.99; });
  }

  TestSoundServer server_;
  SystemSound sound_{server_.remote()};
};

TEST_F(SystemSoundOfATestServer, isStereo) {
  EXPECT_EQ(sound_.channels(), 2);
}

TEST_F(SystemSoundOfATestServer, refusesWhereNothingCanPlay) {
  EXPECT_EQ(sound_.deviceName(), std::nullopt);
  const auto listening = sound_.listen([](const auto&) {}, [](const auto&) {});
  ASSERT_FALSE(listening);
  EXPECT_EQ(listening.error().message, "找不到可用的声音输出设备");
}

TEST_F(SystemSoundOfATestServer, hearsWhatIsPlayedAtItsLevel) {
  const VirtualSink sink{server_.remote(), "one", "第一个"};
  ASSERT_TRUE(eventually([&] { return sound_.deviceName() == "第一个"; }));
  const SoundGenerator player{server_.remote(), SoundGenerator::Player{}, tone(440)};
  const HeardSound heard{sound_};
  ASSERT_TRUE(hears(heard, 440));
  const auto last = heard.blocks().back();
  EXPECT_NEAR(*std::ranges::max_element(last.samples), 0.5F, 0.01F);
  ASSERT_GE(last.samples.size(), 2U);
  EXPECT_EQ(last.samples[0], last.samples[1]) << "left and right of one instant";
  EXPECT_THAT(heard.ends(), IsEmpty());
}

TEST_F(SystemSoundOfATestServer, stampsSoundByTheTimeWhenItIsHeard) {
  const VirtualSink sink{server_.remote(), "one", "第一个"};
  ASSERT_TRUE(eventually([&] { return sound_.deviceName().has_value(); }));
  const SoundGenerator player{server_.remote(), SoundGenerator::Player{}, secondRamp()};
  const HeardSound heard{sound_};
  ASSERT_TRUE(eventually([&] { return heard.blocks().size() > 100; }));
  expectGoodTimes(heard.blocks(), 2);
  EXPECT_LT(worstStampError(heard.blocks()), 0.022) << "a quantum";
}

TEST_F(SystemSoundOfATestServer, hearsTheSilenceWhileNothingPlays) {
  const VirtualSink sink{server_.remote(), "one", "第一个"};
  ASSERT_TRUE(eventually([&] { return sound_.deviceName().has_value(); }));
  const HeardSound heard{sound_};
  ASSERT_TRUE(eventually([&] { return heard.blocks().size() > 10; }));
  EXPECT_THAT(heard.firstChannel(), testing::Each(0.0F));
}

TEST_F(SystemSoundOfATestServer, followsTheDefaultDevice) {
  const VirtualSink one{server_.remote(), "one", "第一个"};
  const VirtualSink other{server_.remote(), "other", "第二个"};
  const SoundGenerator low{server_.remote(), SoundGenerator::Player{"one"}, tone(440)};
  const SoundGenerator high{server_.remote(), SoundGenerator::Player{"other"}, tone(2000)};
  server_.setDefaultSink("one");
  ASSERT_TRUE(eventually([&] { return sound_.deviceName() == "第一个"; }));
  const HeardSound heard{sound_};
  ASSERT_TRUE(hears(heard, 440));
  server_.setDefaultSink("other");
  EXPECT_TRUE(hears(heard, 2000));
  EXPECT_EQ(sound_.deviceName(), "第二个");
  EXPECT_THAT(heard.ends(), IsEmpty());
}

TEST_F(SystemSoundOfATestServer, goesOnWithAnotherDeviceWhenItsOwnGoes) {
  std::optional<VirtualSink> one{std::in_place, server_.remote(), "one", "第一个"};
  const VirtualSink other{server_.remote(), "other", "第二个"};
  const SoundGenerator high{server_.remote(), SoundGenerator::Player{"other"}, tone(2000)};
  server_.setDefaultSink("one");
  ASSERT_TRUE(eventually([&] { return sound_.deviceName() == "第一个"; }));
  const HeardSound heard{sound_};
  ASSERT_TRUE(eventually([&] { return !heard.blocks().empty(); }));
  one.reset();
  EXPECT_TRUE(hears(heard, 2000));
  EXPECT_THAT(heard.ends(), IsEmpty());
}

TEST_F(SystemSoundOfATestServer, endsWithItsLastDevice) {
  std::optional<VirtualSink> sink{std::in_place, server_.remote(), "one", "第一个"};
  ASSERT_TRUE(eventually([&] { return sound_.deviceName().has_value(); }));
  const HeardSound heard{sound_};
  ASSERT_TRUE(eventually([&] { return !heard.blocks().empty(); }));
  sink.reset();
  ASSERT_TRUE(eventually([&] { return !heard.ends().empty(); }));
  const std::size_t blocks = heard.blocks().size();
  std::this_thread::sleep_for(std::chrono::milliseconds{200});
  EXPECT_THAT(heard.ends(), ElementsAre("声音输出设备已断开"));
  EXPECT_THAT(heard.blocks(), SizeIs(blocks));
}

TEST_F(SystemSoundOfATestServer, endsWithTheServer) {
  const VirtualSink sink{server_.remote(), "one", "第一个"};
  ASSERT_TRUE(eventually([&] { return sound_.deviceName().has_value(); }));
  const HeardSound heard{sound_};
  ASSERT_TRUE(eventually([&] { return !heard.blocks().empty(); }));
  server_.kill();
  ASSERT_TRUE(eventually([&] { return !heard.ends().empty(); }));
  EXPECT_THAT(heard.ends(), ElementsAre("与 PipeWire 服务的连接已断开"));
  EXPECT_EQ(sound_.deviceName(), std::nullopt);
}

TEST_F(SystemSoundOfATestServer, comesToNoCallbackAfterItsEnd) {
  const VirtualSink sink{server_.remote(), "one", "第一个"};
  ASSERT_TRUE(eventually([&] { return sound_.deviceName().has_value(); }));
  std::atomic<int> blocks = 0;
  auto listening = sound_.listen([&](const auto&) { ++blocks; }, [](const auto&) {});
  ASSERT_TRUE(listening);
  ASSERT_TRUE(eventually([&] { return blocks > 3; }));
  listening->reset();
  const int atTheEnd = blocks;
  std::this_thread::sleep_for(std::chrono::milliseconds{100});
  EXPECT_EQ(blocks, atTheEnd);
}

TEST_F(SystemSoundOfATestServer, showsWhatIsLostWhileACallbackRuns) {
  const VirtualSink sink{server_.remote(), "one", "第一个"};
  ASSERT_TRUE(eventually([&] { return sound_.deviceName().has_value(); }));
  std::atomic<int> blocks = 0;
  std::atomic<std::int64_t> lost = 0;
  std::int64_t next = 0;
  const auto listening = sound_.listen(
      [&](const media::SoundBlock& block) {
        if (++blocks > 1) lost += block.position.value() - next;
        next = block.position.value() + std::ssize(block.samples) / 2;
        if (blocks == 10) std::this_thread::sleep_for(std::chrono::milliseconds{400});
      },
      [](const auto&) {});
  ASSERT_TRUE(listening);
  ASSERT_TRUE(eventually([&] { return blocks > 20; }));
  EXPECT_GT(lost, media::soundRate * 3 / 10);
}

// Once it goes on, a server either makes up for what it missed or leaves it out.
TEST_F(SystemSoundOfATestServer, countsByTheClockThroughAStandstillOfTheServer) {
  const VirtualSink sink{server_.remote(), "one", "第一个"};
  ASSERT_TRUE(eventually([&] { return sound_.deviceName().has_value(); }));
  const HeardSound heard{sound_};
  ASSERT_TRUE(eventually([&] { return heard.blocks().size() > 10; }));
  server_.freeze();
  std::this_thread::sleep_for(std::chrono::milliseconds{500});
  server_.thaw();
  const media::HostTime thawed = std::chrono::steady_clock::now().time_since_epoch();
  ASSERT_TRUE(eventually(
      [&] { return heard.blocks().back().stamp > thawed + std::chrono::milliseconds{300}; }));
  const auto blocks = heard.blocks();
  const auto& first = blocks.at(4);
  const auto counted = static_cast<double>(*blocks.back().position - *first.position);
  const std::chrono::duration<double> passed = blocks.back().stamp - first.stamp;
  EXPECT_NEAR(counted / media::soundRate, passed.count(), 0.03);
  EXPECT_THAT(heard.ends(), IsEmpty());
}

TEST(SystemSound, refusesWithoutAServer) {
  SystemSound sound{"/nowhere/pipewire-0"};
  EXPECT_EQ(sound.deviceName(), std::nullopt);
  const auto listening = sound.listen([](const auto&) {}, [](const auto&) {});
  ASSERT_FALSE(listening);
  EXPECT_EQ(listening.error().message, "连接不上 PipeWire 服务");
}

}  // namespace
}  // namespace vesk::capture::pipewire::test
