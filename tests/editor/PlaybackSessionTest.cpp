#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <limits>

#include "editor/SessionStage.h"

namespace vesk::editor::test {
namespace {

class PlaybackSessionTest : public SessionStage {
 protected:
  PlaybackSessionTest() : session_(makeSession()) { session_->open(putMarkedTake()); }

  void start() {
    session_->play();
    hostTime += Player::startDelay;
    session_->tick();
  }

  double playerTime() const { return session_->player()->currentTime(hostTime); }

  std::unique_ptr<PreviewController> session_;
};

TEST_F(PlaybackSessionTest, theTimeFollowsThePlayer) {
  start();
  EXPECT_TRUE(session_->isPlaying());
  sound.heardSeconds = 3;
  QSignalSpy moved(session_.get(), &PreviewController::currentTimeChanged);
  session_->tick();
  session_->tick();
  EXPECT_EQ(session_->currentTime(), 3);
  EXPECT_EQ(moved.count(), 1);
}

TEST_F(PlaybackSessionTest, pausedTheTimeOnlyMovesBySeeking) {
  start();
  session_->pause();
  sound.heardSeconds = 3;
  session_->tick();
  session_->pause();
  EXPECT_EQ(session_->currentTime(), 0);
  session_->seek(7);
  EXPECT_EQ(session_->currentTime(), 7);
}

TEST_F(PlaybackSessionTest, aPauseStandsWhereTheSoundWasHeardLast) {
  start();
  sound.heardSeconds = 2.9;
  session_->tick();
  sound.heardSeconds = 3.1;
  QSignalSpy moved(session_.get(), &PreviewController::currentTimeChanged);
  session_->pause();
  EXPECT_FALSE(session_->isPlaying());
  EXPECT_EQ(session_->currentTime(), 3.1);
  EXPECT_EQ(playerTime(), 3.1);
  EXPECT_EQ(moved.count(), 1);
}

TEST_F(PlaybackSessionTest, aPauseBeyondTheEndStandsAtTheEnd) {
  session_->seek(19);
  start();
  sound.heardSeconds = 1.5;
  session_->pause();
  EXPECT_EQ(session_->currentTime(), 20);
  EXPECT_EQ(playerTime(), 20);
}

TEST_F(PlaybackSessionTest, aPauseOfAPlayerWithoutATimeStandsAtTheLastOne) {
  start();
  sound.heardSeconds = 2;
  session_->tick();
  sound.heardSeconds = std::numeric_limits<double>::quiet_NaN();
  session_->pause();
  EXPECT_EQ(session_->currentTime(), 2);
  EXPECT_EQ(playerTime(), 2);
}

TEST_F(PlaybackSessionTest, aSeekStaysWithinTheRecording) {
  session_->seek(100);
  EXPECT_EQ(session_->currentTime(), 20);
  session_->seek(-3);
  EXPECT_EQ(session_->currentTime(), 0);
  session_->seek(4);
  session_->seek(std::numeric_limits<double>::quiet_NaN());
  EXPECT_EQ(session_->currentTime(), 4);
}

TEST_F(PlaybackSessionTest, atTheEndItPausesAndStaysThere) {
  session_->seek(19);
  start();
  sound.heardSeconds = 1.02;
  session_->tick();
  EXPECT_FALSE(session_->isPlaying());
  EXPECT_EQ(session_->currentTime(), 20);
  EXPECT_EQ(playerTime(), 20);
  EXPECT_FALSE(sound.fill);
}

TEST_F(PlaybackSessionTest, playingFromTheEndStartsAgain) {
  session_->seek(19.96);
  session_->play();
  EXPECT_EQ(session_->currentTime(), 0);
}

TEST_F(PlaybackSessionTest, aPlayerWithoutATimeLeavesItAsItIs) {
  start();
  sound.heardSeconds = 2;
  session_->tick();
  sound.heardSeconds = std::numeric_limits<double>::quiet_NaN();
  session_->tick();
  EXPECT_EQ(session_->currentTime(), 2);
}

TEST_F(PlaybackSessionTest, theEndIsNoticedWhereNothingIsDrawn) {
  session_->seek(19.9);
  session_->play();
  hostTime += Player::startDelay;
  runEvents(std::chrono::milliseconds(300));
  sound.heardSeconds = 0.5;
  runEvents(std::chrono::milliseconds(300));
  EXPECT_FALSE(session_->isPlaying());
}

TEST_F(PlaybackSessionTest, withoutARecordingNothingPlays) {
  const auto empty = makeSession();
  empty->play();
  empty->pause();
  empty->seek(3);
  empty->tick();
  empty->applyVolumes();
  EXPECT_FALSE(empty->isPlaying());
  EXPECT_EQ(empty->currentTime(), 0);
  EXPECT_EQ(empty->audioDiagnostics(), (AudioDiagnostics{.statusText = "未知"}));
}

TEST_F(PlaybackSessionTest, pausedAndUntouchedItAsksForNoFrame) {
  runEvents(std::chrono::milliseconds(50));
  QSignalSpy changed(session_.get(), &PreviewController::pictureChanged);
  runEvents(std::chrono::milliseconds(400));
  EXPECT_EQ(changed.count(), 0);
}

TEST_F(PlaybackSessionTest, anotherRecordingEndsThePlayback) {
  start();
  sound.heardSeconds = 3;
  session_->tick();
  session_->open(putMarkedTake("other"));
  EXPECT_FALSE(session_->isPlaying());
  EXPECT_EQ(session_->currentTime(), 0);
  EXPECT_FALSE(sound.fill);
}

}  // namespace
}  // namespace vesk::editor::test
