#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <filesystem>
#include <limits>
#include <vector>

#include "editor/Player.h"
#include "editor/SessionStage.h"
#include "media/SoundReader.h"

namespace vesk::editor::test {
namespace {

using std::chrono::milliseconds;
using testing::IsEmpty;
using testing::SizeIs;

constexpr double cameraOffset = 0.412;
/// The decoder makes up some of the noise anew each time.
constexpr float decoderNoise = 0.02F;
/// Where the microphone's sound begins on the sample take's time line, on a grid of 600ths.
constexpr double micOffset = 110.0 / 600;

using Sound = std::vector<media::StereoSample>;
constexpr std::size_t soundLength = media::soundRate / 10;

/// A tenth of a second of a file from `time` on, this much louder.
Sound stored(const std::filesystem::path& file, double time, float gain) {
  auto reader = *media::SoundReader::open(file);
  reader.seek(std::llround(time * media::soundRate));
  Sound sound(soundLength);
  reader.read(sound);
  for (media::StereoSample& sample : sound) {
    sample = {gain * sample.left, gain * sample.right};
  }
  return sound;
}

float loudest(const Sound& sound) {
  float found = 0;
  for (const auto& [left, right] : sound) {
    found = std::max({found, std::abs(left), std::abs(right)});
  }
  return found;
}

/// What is loudest in the difference of two sounds.
float difference(Sound one, const Sound& other) {
  std::ranges::transform(one, other, one.begin(), [](const auto& a, const auto& b) {
    return media::StereoSample{a.left - b.left, a.right - b.right};
  });
  return loudest(one);
}

class PlayerTest : public testing::Test {
 protected:
  PlayerTest() : project_(*package::RecordingProject::load(VESK_SAMPLE_TAKE, {})) {}

  Player open(const char* take = nullptr) {
    if (take != nullptr) project_ = *package::RecordingProject::load(take, {});
    return Player(project_, output_, {});
  }

  /// Starts and lets the pause before the sound pass.
  void start(Player& player) {
    player.play(now_);
    now_ += Player::startDelay;
    player.advance(now_);
  }

  /// The first tenth of a second that is heard when it plays from `time` on.
  Sound heardFrom(Player& player, double time) {
    player.seek(time, now_);
    start(player);
    Sound sound(soundLength);
    output_.fill(sound);
    return sound;
  }

  package::RecordingProject project_;
  HandOutput output_;
  media::HostTime now_{std::chrono::seconds(50)};
};

TEST_F(PlayerTest, theSoundsClockIsTheMaster) {
  Player player = open();
  player.seek(2, now_);
  start(player);
  EXPECT_EQ(player.currentTime(now_), 2);
  output_.heardSeconds = 1.5;
  EXPECT_EQ(player.currentTime(now_), 3.5);
}

TEST_F(PlayerTest, standsStillUntilTheFirstSampleIsHeard) {
  Player player = open();
  player.play(now_);
  EXPECT_EQ(output_.starts, 0);
  EXPECT_EQ(player.currentTime(now_), 0);
  player.advance(now_ + Player::startDelay - milliseconds(1));
  EXPECT_EQ(output_.starts, 0);
  player.advance(now_ + Player::startDelay);
  EXPECT_EQ(output_.starts, 1);
  output_.heardSeconds = -0.04;
  EXPECT_EQ(player.currentTime(now_), 0);
}

TEST_F(PlayerTest, aPauseKeepsThePlace) {
  Player player = open();
  start(player);
  output_.heardSeconds = 1.25;
  player.pause(now_);
  EXPECT_FALSE(output_.fill);
  EXPECT_FALSE(player.isPlaying());
  EXPECT_EQ(player.currentTime(now_), 1.25);
  start(player);
  output_.heardSeconds = 0.5;
  EXPECT_EQ(player.currentTime(now_), 1.75);
}

TEST_F(PlayerTest, aSeekWhilePlayingGoesOnFromThere) {
  Player player = open();
  start(player);
  output_.heardSeconds = 1;
  player.seek(6, now_);
  EXPECT_EQ(player.currentTime(now_), 6);
  EXPECT_FALSE(output_.fill);
  now_ += Player::startDelay;
  player.advance(now_);
  output_.heardSeconds = 0.5;
  EXPECT_EQ(player.currentTime(now_), 6.5);
}

TEST_F(PlayerTest, seeksInQuickSuccessionStartTheSoundOnce) {
  Player player = open();
  start(player);
  for (int step = 0; step < 5; ++step) {
    player.seek(step, now_);
    now_ += milliseconds(16);
    player.advance(now_);
  }
  EXPECT_EQ(output_.starts, 1);
  now_ += Player::startDelay;
  player.advance(now_);
  EXPECT_EQ(output_.starts, 2);
}

TEST_F(PlayerTest, theCameraFollowsAtItsOffset) {
  Player player = open();
  const auto synced = player.syncedPlayers();
  ASSERT_THAT(synced, SizeIs(1));
  EXPECT_NEAR(synced[0].delta, -cameraOffset, 1e-6);
  EXPECT_NEAR(synced[0].time(3), 3 - cameraOffset, 1e-6);
  EXPECT_EQ(synced[0].time(0.1), 0);
}

TEST_F(PlayerTest, beforeTheCameraStartedItsFirstPictureStands) {
  Player player = open();
  const double first = player.syncedPlayers()[0].pictures->firstPTS();
  player.seek(0.1, now_);
  player.waitForPictures(0.1);
  EXPECT_EQ(player.cameraPicture(0.1)->pts, first);
  player.seek(cameraOffset + 0.5, now_);
  player.waitForPictures(cameraOffset + 0.5);
  EXPECT_NEAR(player.cameraPicture(cameraOffset + 0.5)->pts, 0.5, 1.0 / 30 + 1e-3);
}

TEST_F(PlayerTest, playedFromBeforeItsStartTheCameraStartsLaterByTheDifference) {
  Player player = open();
  player.seek(0.2, now_);
  start(player);
  for (int step = 0; step <= 10; ++step) {
    output_.heardSeconds = 0.1 * step;
    const double time = player.currentTime(now_);
    EXPECT_DOUBLE_EQ(time, 0.2 + 0.1 * step);
    player.waitForPictures(time);
    const double shown = player.cameraPicture(time)->pts;
    const double due = std::max(time - cameraOffset, 0.0);
    EXPECT_LE(shown, due) << time;
    EXPECT_LT(due, shown + 1.0 / 30) << time;
  }
}

TEST_F(PlayerTest, aCameraThatStartedFirstIsAheadOfTheScreen) {
  project_.meta.cameraFirstFramePTS = *project_.meta.firstFramePTS - 2;
  Player player = open();
  EXPECT_EQ(player.syncedPlayers()[0].time(0), 2);
}

TEST_F(PlayerTest, eachVolumeIsThatOfItsTrack) {
  Player player = open();
  const Sound system = stored(project_.screenURL(), 2, 0.5F);
  const Sound mic = stored(*project_.micURL(), 2 - micOffset, 0.5F);
  ASSERT_GT(difference(system, mic), 0.06F) << "they can be told from each other";
  player.setVolumes(0.5, 0);
  EXPECT_LT(difference(heardFrom(player, 2), system), decoderNoise);
  player.setVolumes(0, 0.5);
  EXPECT_LT(difference(heardFrom(player, 2), mic), decoderNoise);
  player.setVolumes(0, 0);
  EXPECT_EQ(loudest(heardFrom(player, 2)), 0);
}

TEST_F(PlayerTest, withoutAMicrophoneItIsHeardAtTheSystemVolume) {
  Player player = open(VESK_MARKS_TAKE);
  player.setVolumes(2.5, 0);
  const Sound twice = stored(project_.screenURL(), 2, 2);
  ASSERT_GT(loudest(twice), 0.1F);
  EXPECT_LT(difference(heardFrom(player, 2), twice), decoderNoise);
  player.setVolumes(0, 1);
  EXPECT_EQ(loudest(heardFrom(player, 2)), 0);
}

TEST_F(PlayerTest, withoutAMicrophoneTheSystemVolumeIsThePlayers) {
  Player player = open(VESK_MARKS_TAKE);
  player.setVolumes(2.5, 1);
  EXPECT_EQ(player.diagnostics().volume, 2);
  player.setVolumes(-1, 1);
  EXPECT_EQ(player.diagnostics().volume, 0);
  player.setVolumes(std::numeric_limits<double>::quiet_NaN(), 1);
  EXPECT_EQ(player.diagnostics().volume, 1);
}

TEST_F(PlayerTest, withAMicrophoneThePlayersOwnVolumeIsFull) {
  Player player = open();
  player.setVolumes(0.3, 0.4);
  EXPECT_EQ(player.diagnostics().volume, 1);
}

TEST_F(PlayerTest, tellsHowItIs) {
  Player player = open();
  EXPECT_EQ(player.diagnostics(),
            (AudioDiagnostics{.exists = true, .trackCount = 2, .statusText = "就绪"}));
  start(player);
  EXPECT_EQ(player.diagnostics().rate, 1);
}

TEST_F(PlayerTest, aRecordingWithoutFilesPlaysInSilence) {
  project_ = package::RecordingProject::make("nowhere.recording", {}, {});
  Player player = open();
  EXPECT_EQ(loudest(heardFrom(player, 1)), 0);
  EXPECT_FALSE(player.screenPicture(1));
  EXPECT_THAT(player.syncedPlayers(), IsEmpty());
  EXPECT_TRUE(player.hasExactPictures(1));
  EXPECT_THAT(player.diagnostics().statusText, testing::StartsWith("失败："));
}

}  // namespace
}  // namespace vesk::editor::test
