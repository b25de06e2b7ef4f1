#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "ProcessLimits.h"
#include "export/AudioMux.h"
#include "export/AudioMuxStage.h"

// What goes wrong with the sound: the picture is never lost, and no file stays behind.
namespace vesk::exporting {
namespace {

namespace fs = std::filesystem;
using Format = ExportSettings::Format;
using media::MediaError;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::MatchesRegex;
using testing::StartsWith;

class AudioMuxFailureTest : public AudioMuxStage {};

TEST_P(AudioMuxFailureTest, absurdStampsLoseNothing) {
  addSystemSound();
  addNarration();
  constexpr double infinite = std::numeric_limits<double>::infinity();
  for (const double stamp : {1e300, -1e300, infinite, -infinite, std::nan("")}) {
    project_.meta.micFirstSamplePTS = stamp;
    media::writeBytes(movie_, silent_);
    expectSound();
    EXPECT_TRUE(media::storedSound(movie_).packets == media::storedSound(screen_).packets);
  }
}

TEST_P(AudioMuxFailureTest, withoutAnySoundTheSilentMovieIsTheResult) {
  EXPECT_TRUE(mux({.system = 0.5, .mic = 0.5}));
  expectSilentMovie();
  media::makeMovie(screen_, {.ticks = media::evenTicks(60, 20)});
  EXPECT_TRUE(mux({.system = 0.5, .mic = 0.5}));
  expectSilentMovie();
  EXPECT_THAT(log_, IsEmpty());
}

TEST_P(AudioMuxFailureTest, aScreenWithoutSoundLeavesTheNarration) {
  media::makeMovie(screen_, {.ticks = media::evenTicks(60, 20)});
  addNarration();
  expectSound();
  EXPECT_EQ(media::soundTrackCount(movie_), 1);
  EXPECT_TRUE(media::storedSound(movie_).payloads() == media::storedSound(mic_).payloads());
}

TEST_P(AudioMuxFailureTest, aNarrationThatCannotBeReadLeavesTheSystemSound) {
  addSystemSound();
  addNarration();
  const std::string whole = media::bytesOf(mic_);
  for (const std::string& damaged : {std::string(), std::string(7'000, 'z'),
                                     whole.substr(0, whole.size() / 2), whole.substr(0, 40)}) {
    for (const double gain : {1.0, 0.5}) {
      media::writeBytes(mic_, damaged);
      media::writeBytes(movie_, silent_);
      expectSound({.system = gain, .mic = gain});
      EXPECT_EQ(media::soundTrackCount(movie_), 1);
      EXPECT_GT(media::loudness(media::played(movie_), 0.2, 1.8), 0.05);
    }
  }
}

TEST_P(AudioMuxFailureTest, aNarrationOfGarbageInsideLeavesTheSystemSound) {
  addSystemSound();
  addNarration();
  std::string bytes = media::bytesOf(mic_);
  const std::size_t data = bytes.find("mdat") + 4;
  std::fill(bytes.begin() + static_cast<std::ptrdiff_t>(data),
            bytes.begin() + static_cast<std::ptrdiff_t>(bytes.find("moov") - 4), '\xff');
  media::writeBytes(mic_, bytes);
  for (const double gain : {1.0, 0.5}) {
    media::writeBytes(movie_, silent_);
    expectSound({.system = gain, .mic = gain});
    EXPECT_GT(media::loudness(media::played(movie_), 0.2, 1.8), 0.05);
  }
}

TEST_P(AudioMuxFailureTest, onlyFilesInsideThePackageAreHeard) {
  addSystemSound();
  fs::rename(screen_, folder_ / "elsewhere.mov");
  fs::create_symlink(folder_ / "elsewhere.mov", screen_);
  ASSERT_EQ(::mkfifo(mic_.c_str(), 0600), 0);
  EXPECT_TRUE(mux());
  expectSilentMovie();
}

TEST_P(AudioMuxFailureTest, soundThatTheContainerCannotHoldIsEncodedAnew) {
  media::makeSound(
      screen_,
      {.encoder = "pcm_alaw", .muxer = "mov", .seconds = 2, .wave = media::tone(440, 0.3F)});
  expectSound();
  EXPECT_EQ(media::storedSound(movie_).codec, GetParam() == Format::mp4 ? "aac" : "pcm_alaw");
}

TEST_P(AudioMuxFailureTest, aMovieWithoutAPictureIsLeftAlone) {
  addSystemSound();
  fs::copy_file(screen_, movie_, fs::copy_options::overwrite_existing);
  silent_ = media::bytesOf(movie_);
  EXPECT_TRUE(mux({.system = 0.5}));
  expectSilentMovie();
}

TEST_P(AudioMuxFailureTest, aMixThatFailsLeavesTheRecordedLoudness) {
  addSystemSound();
  AudioOperations work;
  work.mix = [](const media::SoundMix&, const fs::path& file) -> AudioOperations::Outcome {
    media::writeBytes(file, "half a mix");
    return std::unexpected(MediaError{MediaError::Kind::diskFull, "磁盘空间不足"});
  };
  expectSound({.system = 0.5}, work);
  EXPECT_EQ(log_, "error: 音量混音失败，按原始音量导出：磁盘空间不足\n");
  EXPECT_TRUE(media::storedSound(movie_).packets == media::storedSound(screen_).packets);
}

TEST_P(AudioMuxFailureTest, aMachineThatCannotMixLeavesTheRecordedLoudness) {
  addSystemSound();
  AudioOperations work;
  work.mix = [](const media::SoundMix&, const fs::path&) -> AudioOperations::Outcome {
    return std::unexpected(MediaError{MediaError::Kind::unsupported, "没有 AAC 编码器"});
  };
  expectSound({.system = 0.5}, work);
  EXPECT_THAT(log_, IsEmpty());
  EXPECT_TRUE(media::storedSound(movie_).packets == media::storedSound(screen_).packets);
}

TEST_P(AudioMuxFailureTest, aMachineThatCannotMuxLeavesTheSilentMovie) {
  addSystemSound();
  AudioOperations work;
  work.remux = [](const media::MovieRemux&, const fs::path&) -> AudioOperations::Outcome {
    return std::unexpected(MediaError{MediaError::Kind::unsupported, "没有封装器"});
  };
  EXPECT_TRUE(mux({.system = 0.5}, work));
  EXPECT_THAT(log_, EndsWith("error: 无法创建混音会话，输出将不含音频\n"));
  expectSilentMovie();
}

TEST_P(AudioMuxFailureTest, aDiskThatFillsUpLeavesTheSilentMovie) {
  addSystemSound();
  addNarration();
  for (const AudioGains gains : {AudioGains{}, AudioGains{.system = 0.5}}) {
    std::expected<void, ExportError> outcome;
    {
      const test::FileSizeLimit limit(silent_.size() + 2'000);
      outcome = mux(gains);
    }
    ASSERT_FALSE(outcome);
    EXPECT_EQ(outcome.error().description(),
              "写入失败：声音没有加进 “tour”，它仍是无声的：“tour” 超过了允许的文件大小，没有写完");
    expectSilentMovie();
  }
}

TEST_P(AudioMuxFailureTest, aMixThatFindsNoRoomLeavesTheRecordedLoudness) {
  addSystemSound();
  AudioOperations work;
  work.mix = [](const media::SoundMix& mix, const fs::path& file) {
    const test::FileSizeLimit limit(100);
    return mix.write(file);
  };
  expectSound({.system = 0.5}, work);
  EXPECT_THAT(log_, MatchesRegex("error: 音量混音失败，按原始音量导出：“\\.tqzn-audio-.*\\.m4a” "
                                 "超过了允许的文件大小，没有写完\n"));
}

TEST_P(AudioMuxFailureTest, aFolderThatIsClosedLeavesTheSilentMovie) {
  addSystemSound();
  ASSERT_EQ(::chmod(folder_.path().c_str(), 0755), 0);
  ASSERT_EQ(::chmod(output_.c_str(), 0555), 0);
  std::expected<void, ExportError> outcome;
  {
    const test::WithoutPrivileges nobody;
    outcome = mux({.system = 0.5});
  }
  ASSERT_EQ(::chmod(output_.c_str(), 0755), 0);
  ASSERT_FALSE(outcome);
  EXPECT_THAT(outcome.error().description(), HasSubstr("没有权限写入输出文件夹"));
  EXPECT_THAT(log_, StartsWith("error: 音量混音失败，按原始音量导出："));
  expectSilentMovie();
}

TEST_P(AudioMuxFailureTest, whenTheMovieCannotTakeItsPlaceItRemainsBesideIt) {
  addSystemSound();
  AudioOperations work;
  work.remux = [&](const media::MovieRemux& remux, const fs::path& file) {
    auto outcome = remux.write(file);
    fs::remove(movie_);
    fs::create_directories(movie_ / "something");
    return outcome;
  };
  const auto outcome = mux({.system = 0.5}, work);
  ASSERT_FALSE(outcome);
  EXPECT_THAT(outcome.error().description(), StartsWith("写入失败：声音没有加进 “tour”"));
  ASSERT_THAT(files(),
              ElementsAre(MatchesRegex("\\.tqzn-mux-.*\\.mp4|\\.tqzn-mux-.*\\.mov"), "tour"));
  const fs::path remains = output_ / files().front();
  EXPECT_THAT(outcome.error().description(), HasSubstr(remains.filename().string()));
  EXPECT_EQ(media::soundTrackCount(remains), 1);
  EXPECT_TRUE(media::storedPicture(remains).packets == picture_);
}

INSTANTIATE_TEST_SUITE_P(Formats, AudioMuxFailureTest, testing::Values(Format::mp4, Format::mov),
                         [](const auto& param) {
                           return param.param == Format::mp4 ? "mp4" : "mov";
                         });

}  // namespace
}  // namespace vesk::exporting
