#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <thread>
#include <vector>

#include "editor/Player.h"
#include "editor/SessionStage.h"

namespace vesk::editor::test {
namespace {

using std::chrono::milliseconds;
using testing::IsEmpty;
using testing::SizeIs;

constexpr double cameraOffset = 0.412;

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

  /// The largest sample of the sound that follows, read at about the pace of a device.
  float loudest() {
    float found = 0;
    std::vector<media::StereoSample> samples(960);
    for (int quantum = 0; quantum < 25; ++quantum) {
      output_.fill(samples);
      for (const auto& sample : samples) found = std::max(found, std::abs(sample.left));
      std::this_thread::sleep_for(milliseconds(5));
    }
    return found;
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

TEST_F(PlayerTest, aCameraThatStartedFirstIsAheadOfTheScreen) {
  project_.meta.cameraFirstFramePTS = *project_.meta.firstFramePTS - 2;
  Player player = open();
  EXPECT_EQ(player.syncedPlayers()[0].time(0), 2);
}

TEST_F(PlayerTest, eachVolumeIsThatOfItsTrack) {
  Player player = open();
  start(player);
  player.setVolumes(0, 0);
  loudest();  // until the gain has come down
  EXPECT_EQ(loudest(), 0);
  player.setVolumes(1, 0);
  loudest();
  EXPECT_GT(loudest(), 0);
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
  start(player);
  EXPECT_EQ(loudest(), 0);
  EXPECT_FALSE(player.screenPicture(1));
  EXPECT_THAT(player.syncedPlayers(), IsEmpty());
  EXPECT_TRUE(player.hasExactPictures(1));
  EXPECT_THAT(player.diagnostics().statusText, testing::StartsWith("失败："));
}

}  // namespace
}  // namespace vesk::editor::test
