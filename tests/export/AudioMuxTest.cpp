#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>
#include <vector>

#include "export/AudioMux.h"
#include "export/AudioMuxStage.h"

namespace vesk::exporting {
namespace {

namespace fs = std::filesystem;
using Format = ExportSettings::Format;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::MatchesRegex;

class AudioMuxTest : public AudioMuxStage {};

TEST_P(AudioMuxTest, withBothGainsOneTheSoundPassesPacketForPacket) {
  addSystemSound();
  addNarration(0.183);
  expectSound();
  EXPECT_EQ(media::soundTrackCount(movie_), 2);
  EXPECT_TRUE(media::storedSound(movie_, 0).packets == media::storedSound(screen_).packets);
  EXPECT_TRUE(media::storedSound(movie_, 1).payloads() == media::storedSound(mic_).payloads());
}

TEST_P(AudioMuxTest, withBothGainsOneNothingIsMixed) {
  addSystemSound();
  addNarration();
  AudioOperations work;
  work.mix = [](const media::SoundMix&, const fs::path&) -> AudioOperations::Outcome {
    ADD_FAILURE() << "a mix";
    return {};
  };
  expectSound({}, work);
  expectSound({.system = 1.0005, .mic = 0.9995}, work);
  expectSound({.system = std::numeric_limits<double>::quiet_NaN()}, work);
  EXPECT_THAT(log_, IsEmpty());
}

TEST_P(AudioMuxTest, theBeepStandsWhereItWasRecorded) {
  for (const double late : {0.0, 0.005, 0.03, 0.183, 0.412}) {
    addSystemSound();
    addNarration(late, 2);
    media::writeBytes(movie_, silent_);
    expectSound();
    EXPECT_NEAR(media::beepTime(media::played(movie_, 1)), 1.5, 0.001) << late;
    media::writeBytes(movie_, silent_);
    expectSound({.system = 0.1});
    EXPECT_EQ(media::soundTrackCount(movie_), 1);
    EXPECT_NEAR(media::beepTime(media::played(movie_)), 1.5, 0.001) << late;
  }
}

TEST_P(AudioMuxTest, theBeepOfALongTakeStandsAtFiveSeconds) {
  media::makeSilentMovie(
      movie_, GetParam() == Format::mp4 ? media::Container::mp4 : media::Container::mov, 390);
  silent_ = media::bytesOf(movie_);
  picture_ = media::storedPicture(movie_).packets;
  addSystemSound(6.5);
  media::makeSound(mic_, {.seconds = 6, .wave = media::beep(5 - 0.183)});
  project_.meta.micFirstSamplePTS = *project_.meta.firstFramePTS + 0.183;
  expectSound();
  EXPECT_NEAR(media::beepTime(media::played(movie_, 1)), 5, 0.005);
  media::writeBytes(movie_, silent_);
  expectSound({.system = 0.2});
  EXPECT_NEAR(media::beepTime(media::played(movie_)), 5, 0.005);
}

TEST_P(AudioMuxTest, gainsAreHeard) {
  addSystemSound();
  const double recorded = media::loudness(media::played(screen_), 0.2, 1.8);
  const auto heard = [&](double gain) {
    media::writeBytes(movie_, silent_);
    expectSound({.system = gain});
    return media::loudness(media::played(movie_), 0.2, 1.8) / recorded;
  };
  EXPECT_NEAR(heard(0.5), 0.5, 0.01);
  EXPECT_NEAR(heard(2), 2, 0.02);
  EXPECT_NEAR(heard(3), 2, 0.02);
  EXPECT_NEAR(heard(std::numeric_limits<double>::infinity()), 2, 0.02);
  EXPECT_LT(heard(0), 1e-6);
  EXPECT_LT(heard(-1), 1e-6);
}

TEST_P(AudioMuxTest, eachGainIsForItsOwnTrack) {
  addSystemSound();
  addNarration(0, 2);
  expectSound({.system = 0, .mic = 2});
  const auto sound = media::played(movie_);
  EXPECT_LT(media::loudness(sound, 0.2, 1.4), 1e-3);
  EXPECT_NEAR(media::loudness(sound, 1.52, 1.58), 2 * 0.25 * std::sqrt(0.5), 0.02);
  EXPECT_EQ(log_, "info: audio gains applied: 2:0 3:2\n");
}

TEST_P(AudioMuxTest, theGainsInTheLogAreTheOnesUsed) {
  addNarration();
  expectSound({.system = 7, .mic = 0.5});
  EXPECT_EQ(log_, "info: audio gains applied: 2:0.5\n");
}

TEST_P(AudioMuxTest, aMixLastsAsLongAsThePicture) {
  addSystemSound(5);
  expectSound({.system = 0.5});
  EXPECT_EQ(media::storedSound(movie_).end, 96'000);
}

TEST_P(AudioMuxTest, loudTracksDoNotClipTogether) {
  media::makeSound(screen_,
                   {.muxer = "mov", .channels = 2, .seconds = 2, .wave = media::tone(440, 0.95F)});
  media::makeSound(mic_, {.seconds = 2, .wave = media::tone(310, 0.95F)});
  expectSound({.system = 2, .mic = 2});
  float highest = 0;
  for (const media::StereoSample& sample : media::played(movie_)) {
    highest = std::max({highest, std::abs(sample.left), std::abs(sample.right)});
  }
  EXPECT_LT(highest, 1.03F);  // the encoder's own share
}

TEST_P(AudioMuxTest, onlyANoticeableOffsetIsLogged) {
  addNarration(0.03);
  expectSound();
  EXPECT_THAT(log_, IsEmpty());
  media::writeBytes(movie_, silent_);
  addNarration(0.05);
  expectSound();
  EXPECT_THAT(log_, IsEmpty());
  media::writeBytes(movie_, silent_);
  addNarration(0.06);
  expectSound();
  EXPECT_EQ(log_, "info: mic aligned with +0.060000s offset\n");
}

TEST_P(AudioMuxTest, aNarrationThatStartedBeforeThePictureStartsWithIt) {
  addNarration();
  project_.meta.micFirstSamplePTS = *project_.meta.firstFramePTS - 0.4;
  expectSound();
  EXPECT_TRUE(media::storedSound(movie_).packets == media::storedSound(mic_).packets);
}

TEST_P(AudioMuxTest, aNarrationThatIsLongerThanThePictureIsCutWithIt) {
  addNarration(0.5, 5);
  expectSound();
  EXPECT_EQ(media::storedSound(movie_).end, 96'000);
}

TEST_P(AudioMuxTest, aNarrationThatStartsAfterTheEndIsNotHeard) {
  addSystemSound();
  addNarration();
  project_.meta.micFirstSamplePTS = *project_.meta.firstFramePTS + 2.5;
  expectSound({.mic = 0.5});  // a gain of what is not heard takes no mix
  EXPECT_EQ(media::soundTrackCount(movie_), 1);
  EXPECT_TRUE(media::storedSound(movie_).packets == media::storedSound(screen_).packets);
  EXPECT_EQ(log_, "info: mic aligned with +2.500000s offset\n");
}

TEST_P(AudioMuxTest, aNarrationAloneThatStartsAfterTheEndLeavesTheSilentMovie) {
  addNarration();
  project_.meta.micFirstSamplePTS = *project_.meta.firstFramePTS + 2;
  EXPECT_TRUE(mux());
  expectSilentMovie();
}

TEST_P(AudioMuxTest, absentStampsCountAsZero) {
  addNarration();
  project_.meta.micFirstSamplePTS.reset();
  expectSound();
  EXPECT_TRUE(media::storedSound(movie_).packets == media::storedSound(mic_).packets);
  EXPECT_THAT(log_, IsEmpty());

  media::writeBytes(movie_, silent_);
  project_.meta.firstFramePTS.reset();
  project_.meta.micFirstSamplePTS = 0.25;
  expectSound();
  EXPECT_EQ(media::storedSound(movie_).packets.front().pts,
            media::storedSound(mic_).packets.front().pts + 12'000);
  EXPECT_EQ(log_, "info: mic aligned with +0.250000s offset\n");
}

TEST_P(AudioMuxTest, theTemporaryFilesLieHiddenBesideTheMovie) {
  addSystemSound();
  std::vector<std::string> seen;
  AudioOperations work;
  work.remux = [&](const media::MovieRemux& remux, const fs::path& file) {
    auto outcome = remux.write(file);
    seen = files();
    return outcome;
  };
  expectSound({.system = 0.5}, work);
  const std::string extension = GetParam() == Format::mp4 ? "mp4" : "mov";
  EXPECT_THAT(seen, ElementsAre(MatchesRegex("\\.tqzn-audio-[0-9A-F-]+\\.m4a"),
                                MatchesRegex("\\.tqzn-mux-[0-9A-F-]+\\." + extension), "tour"));
}

TEST_P(AudioMuxTest, aLinkToTheMovieStaysALink) {
  addSystemSound();
  fs::create_directory(folder_ / "elsewhere");
  const fs::path link = folder_ / "elsewhere" / "link";
  fs::create_symlink(movie_, link);
  ASSERT_TRUE(muxAudio(project_, link, GetParam(), {}));
  EXPECT_TRUE(fs::is_symlink(link));
  EXPECT_EQ(media::soundTrackCount(movie_), 1);
}

TEST_P(AudioMuxTest, theMovieKeepsItsPermissions) {
  addSystemSound();
  ASSERT_EQ(::chmod(movie_.c_str(), 0640), 0);
  expectSound();
  EXPECT_EQ(fs::status(movie_).permissions(), fs::perms{0640});
}

TEST_P(AudioMuxTest, theSampleTakePassesPacketForPacket) {
  const auto take = package::RecordingProject::load(VESK_SAMPLE_TAKE, {});
  ASSERT_TRUE(take);
  ASSERT_TRUE(muxAudio(*take, movie_, GetParam(), {}));
  const auto system = media::storedSound(take->screenURL()).payloads();
  const auto kept = media::storedSound(movie_, 0).payloads();
  ASSERT_GT(kept.size(), 90U);  // of two seconds
  EXPECT_TRUE(std::equal(kept.begin(), kept.end(), system.begin()));
}

INSTANTIATE_TEST_SUITE_P(Formats, AudioMuxTest, testing::Values(Format::mp4, Format::mov),
                         [](const auto& param) {
                           return param.param == Format::mp4 ? "mp4" : "mov";
                         });

}  // namespace
}  // namespace vesk::exporting
