#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>

#include "ProcessLimits.h"
#include "media/CaptureMovie.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/TestSound.h"
#include "media/TestTake.h"

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using namespace std::chrono_literals;
using Kind = MediaError::Kind;
using State = CaptureMovie::State;
using testing::HasSubstr;
using testing::SizeIs;

constexpr int fps = 30;

void offerPatiently(CaptureMovie& movie, int index) {
  while (movie.status().state != State::failed &&
         !movie.offer(roughPicture(index), takeTime(static_cast<double>(index) / fps))) {
    std::this_thread::sleep_for(1ms);
  }
}

class CaptureMovieTest : public testing::Test {
 protected:
  TemporaryFolder folder;
  fs::path file = folder / "screen.mov";
};

TEST_F(CaptureMovieTest, writesWhatItWasOffered) {
  auto movie = CaptureMovie::create(file, takeSettings("libx265", 2)).value();
  TestSoundSource source(2, beepAt(1));
  for (int i = 0; i < 3 * fps; ++i) {
    offerPatiently(movie, i);
    while (source.time() < static_cast<double>(i) / fps) {
      ASSERT_TRUE(movie.offer(source.next()));
    }
  }
  movie.repeatLatest(takeTime(4));
  ASSERT_TRUE(movie.finish());
  const auto packets = inspect(file).packets;
  ASSERT_THAT(packets, SizeIs(3 * fps + 1));
  EXPECT_NEAR(packets.back().pts, 4, 1e-5);
  EXPECT_NEAR(beepTime(played(file)), 1, 0.001);
}

TEST_F(CaptureMovieTest, aPictureForWhichThereIsNoRoomIsRefused) {
  CaptureSettings settings = takeSettings();
  settings.pictures->width = 1920;
  settings.pictures->height = 1080;
  auto movie = CaptureMovie::create(file, settings).value();
  const auto picture = roughPicture(0, 1920, 1080);
  std::size_t taken = 0;
  std::size_t refused = 0;
  for (int i = 0; i < 40; ++i) {
    (movie.offer(picture, takeTime(static_cast<double>(i) / fps)) ? taken : refused) += 1;
  }
  EXPECT_GE(taken, CaptureMovie::pictureRoom);
  EXPECT_GT(refused, 0U);
  ASSERT_TRUE(movie.finish());
  EXPECT_EQ(inspect(file).packets.size(), taken);
}

TEST_F(CaptureMovieTest, soundIsBounded) {
  CaptureSettings settings = takeSettings("libx264-ultrafast", 1);
  settings.pictures->width = 3840;
  settings.pictures->height = 2160;
  auto movie = CaptureMovie::create(file, settings).value();
  const auto picture = roughPicture(0, 3840, 2160);
  for (int i = 0; i < 7; ++i) {
    movie.offer(picture, takeTime(static_cast<double>(i) / fps));
  }
  const std::vector<float> samples(soundRate, 0.1F);
  int taken = 0;
  for (int second = 0; second < 12; ++second) {
    taken += movie.offer(SoundBlock{takeTime(second), {}, samples}) ? 1 : 0;
  }
  EXPECT_EQ(taken, 10);
  EXPECT_TRUE(movie.finish());
}

TEST_F(CaptureMovieTest, isIdleUntilTheFirstPicture) {
  auto movie = CaptureMovie::create(file, takeSettings("libx264-ultrafast", 1)).value();
  EXPECT_EQ(movie.status().state, State::idle);
  ASSERT_TRUE(movie.offer(TestSoundSource(1).next()));
  EXPECT_EQ(movie.status().state, State::idle);
  ASSERT_TRUE(movie.offer(flatPicture(0), takeTime(0)));
  EXPECT_EQ(movie.status().state, State::writing);
}

TEST_F(CaptureMovieTest, soundAloneIsWrittenFromItsFirstBlockOn) {
  CaptureSettings settings;
  settings.kind = GrowingFile::sound;
  settings.sound = {.channels = 1, .bitRate = 128'000};
  auto movie = CaptureMovie::create(file, settings).value();
  EXPECT_EQ(movie.status().state, State::idle);
  TestSoundSource source(1, beepAt(0.5));
  while (source.time() < 2) {
    ASSERT_TRUE(movie.offer(source.next()));
  }
  EXPECT_EQ(movie.status().state, State::writing);
  ASSERT_TRUE(movie.finish());
  EXPECT_NEAR(beepTime(played(file)), 0.5, 0.001);
}

TEST_F(CaptureMovieTest, aScreenThatStandsStillIsWrittenForGood) {
  auto movie = CaptureMovie::create(file, takeSettings()).value();
  ASSERT_TRUE(movie.offer(flatPicture(0), takeTime(0)));
  for (int i = 0; i < 20 * fps; ++i) {
    movie.stillAt(takeTime(static_cast<double>(i) / fps));
  }
  ASSERT_TRUE(movie.finish());
  EXPECT_GE(inspect(file).packets.size(), 2U);
}

TEST_F(CaptureMovieTest, nothingIsTakenInOnceItIsFinished) {
  auto movie = CaptureMovie::create(file, takeSettings("libx264-ultrafast", 1)).value();
  ASSERT_TRUE(movie.offer(flatPicture(0), takeTime(0)));
  ASSERT_TRUE(movie.finish());
  EXPECT_FALSE(movie.offer(flatPicture(1), takeTime(1)));
  EXPECT_FALSE(movie.offer(TestSoundSource(1).next()));
  movie.repeatLatest(takeTime(2));
  EXPECT_TRUE(movie.finish());
  EXPECT_THAT(inspect(file).packets, SizeIs(1));
}

TEST_F(CaptureMovieTest, oneThatIsLetGoIsFinished) {
  {
    auto movie = CaptureMovie::create(file, takeSettings()).value();
    ASSERT_TRUE(movie.offer(flatPicture(0), takeTime(0)));
    ASSERT_TRUE(movie.offer(flatPicture(1), takeTime(1)));
  }
  EXPECT_THAT(inspect(file).packets, SizeIs(2));
}

TEST_F(CaptureMovieTest, aFailureIsToldOnceAndKeepsWhatWasCut) {
  std::atomic<int> calls = 0;
  std::promise<MediaError> told;
  auto movie = CaptureMovie::create(file, takeSettings(), [&](const MediaError& error) {
                 if (++calls == 1) {
                   told.set_value(error);
                 }
               }).value();
  CaptureMovie::Outcome outcome;
  {
    const test::FileSizeLimit limit(200'000);
    for (int i = 0; movie.status().state != State::failed && i < 60 * fps; ++i) {
      offerPatiently(movie, i);
    }
    outcome = movie.finish();
  }
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.error().kind, Kind::diskFull);
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(told.get_future().get(), outcome.error());
  EXPECT_EQ(movie.status(), (CaptureMovie::Status{State::failed, outcome.error()}));
  EXPECT_FALSE(movie.offer(flatPicture(0), takeTime(1000)));
  EXPECT_FALSE(inspect(file).packets.empty());
}

TEST_F(CaptureMovieTest, aFileThatCannotBeMadeIsToldAtOnce) {
  const auto movie = CaptureMovie::create(folder / "gone" / "screen.mov", takeSettings());
  ASSERT_FALSE(movie);
  EXPECT_THAT(movie.error().message, HasSubstr("不存在"));
}

}  // namespace
}  // namespace vesk::media
