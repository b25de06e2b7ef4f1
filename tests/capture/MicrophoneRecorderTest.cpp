#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <chrono>

#include "capture/MicrophoneRecorder.h"
#include "capture/fake/FakeSoundSource.h"
#include "capture/fake/FakeTakeMovies.h"
#include "package/TemporaryDirectory.h"

namespace vesk::capture {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using namespace std::chrono_literals;
using Kind = MicrophoneRecorder::MicError::Kind;

class MicrophoneRecorderTest : public testing::Test {
 protected:
  auto start() { return recorder_.start(folder_.path() / "mic.m4a"); }
  void hear(media::HostTime stamp) {
    static constexpr std::array<float, 4> samples{};
    microphone_.deliver({.stamp = stamp, .position = {}, .samples = samples});
  }

  package::TemporaryDirectory folder_;
  fake::FakeSoundSource microphone_{1};
  fake::FakeTakeMovies movies_;
  MicrophoneRecorder recorder_{microphone_, movies_.opener()};
};

TEST_F(MicrophoneRecorderTest, writesOneChannelFromTheFirstSampleOn) {
  ASSERT_TRUE(start());
  hear(1500ms);
  hear(1600ms);
  recorder_.stop();
  const auto movie = movies_.movie("mic.m4a");
  ASSERT_TRUE(movie);
  EXPECT_EQ(movie->settings.kind, media::GrowingFile::sound);
  EXPECT_EQ(movie->settings.sound, (media::SoundTrackSettings{.channels = 1, .bitRate = 128'000}));
  EXPECT_FALSE(movie->settings.pictures);
  EXPECT_THAT(movie->sounds, ElementsAre(1500ms, 1600ms));
  EXPECT_TRUE(movie->isFinished);
  EXPECT_EQ(recorder_.firstSamplePTS(), 1.5);
  EXPECT_EQ(recorder_.failure(), std::nullopt);
}

TEST_F(MicrophoneRecorderTest, withoutAMicrophoneItDoesNotStart) {
  microphone_.setDeviceName({});
  const auto started = start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().kind, Kind::noDevice);
  EXPECT_EQ(started.error().message, "找不到可用的麦克风");
  EXPECT_THAT(movies_.movies(), IsEmpty());
}

TEST_F(MicrophoneRecorderTest, aFileThatCannotBeMadeIsAnError) {
  movies_.failToOpen(
      media::MediaError{.kind = media::MediaError::Kind::diskFull, .message = "磁盘已满"});
  const auto started = start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().message, "麦克风写入器创建失败：磁盘已满");
}

TEST_F(MicrophoneRecorderTest, aMicrophoneThatRefusesIsAnErrorAndItsFileIsClosed) {
  microphone_.fail(BackendError{"设备忙"});
  const auto started = start();
  ASSERT_FALSE(started);
  EXPECT_EQ(started.error().kind, Kind::sessionSetupFailed);
  EXPECT_EQ(started.error().message, "麦克风会话创建失败：设备忙");
  EXPECT_TRUE(movies_.movie("mic.m4a")->isFinished);
}

TEST_F(MicrophoneRecorderTest, aMicrophoneThatGoesAwayIsAFailureOfTheTakeSoFar) {
  ASSERT_TRUE(start());
  hear(1s);
  microphone_.end(BackendError{"麦克风已断开"});
  EXPECT_EQ(recorder_.failure(), "麦克风已断开");
  recorder_.stop();
  EXPECT_EQ(recorder_.failure(), "麦克风已断开");
  EXPECT_TRUE(movies_.movie("mic.m4a")->isFinished);
}

TEST_F(MicrophoneRecorderTest, aWriterThatFailsKeepsItsFirstReason) {
  ASSERT_TRUE(start());
  hear(1s);
  movies_.breakMovie("mic.m4a", "磁盘已满");
  hear(2s);
  microphone_.end(BackendError{"麦克风已断开"});
  EXPECT_EQ(recorder_.failure(), "磁盘已满");
  EXPECT_THAT(movies_.movie("mic.m4a")->sounds, ElementsAre(1s));
}

TEST_F(MicrophoneRecorderTest, aWriterThatFailsWithoutWordsIsNamed) {
  ASSERT_TRUE(start());
  movies_.breakMovie("mic.m4a", "");
  hear(2s);
  EXPECT_EQ(recorder_.failure(), "麦克风写入器异常终止");
}

TEST_F(MicrophoneRecorderTest, aSecondTakeHasItsOwnFirstSample) {
  ASSERT_TRUE(start());
  hear(1s);
  recorder_.stop();
  ASSERT_TRUE(start());
  EXPECT_EQ(recorder_.firstSamplePTS(), std::nullopt);
  hear(7s);
  EXPECT_EQ(recorder_.firstSamplePTS(), 7.0);
}

TEST_F(MicrophoneRecorderTest, stoppedWithoutAStartItDoesNothing) {
  recorder_.stop();
  EXPECT_THAT(movies_.movies(), IsEmpty());
}

}  // namespace
}  // namespace vesk::capture
