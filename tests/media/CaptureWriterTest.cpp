#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <random>
#include <set>
#include <string>
#include <vector>

#include "ProcessLimits.h"
#include "media/CaptureWriter.h"
#include "media/FragmentJoining.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/TestSound.h"
#include "media/TestTake.h"
#include "media/VideoReader.h"

namespace vesk::media {
namespace {

namespace fs = std::filesystem;
using Kind = MediaError::Kind;
using testing::Contains;
using testing::Each;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::Not;
using testing::SizeIs;

constexpr int fps = 30;
constexpr int keyDistance = 2 * fps;

/// What could be played if everything died now.
struct Growth {
  std::uintmax_t size = 0;
  int pictures = 0;
};

/// Writes a take of flat pictures, each followed by its sound.
class Take {
 public:
  Take(const fs::path& file, const CaptureSettings& settings)
      : file_(file),
        channels_(settings.sound ? settings.sound->channels : 0),
        writer_(CaptureWriter::create(file, settings).value()) {}

  void write(int pictures) {
    for (int end = count_ + pictures; count_ < end; ++count_) {
      const double time = static_cast<double>(count_) / fps;
      ASSERT_TRUE(writer_.write(flatPicture(count_), takeTime(time)));
      while (channels_ > 0 && source_.time() < time) {
        ASSERT_TRUE(writer_.write(source_.next()));
      }
      noteGrowth();
    }
  }

  CaptureWriter& writer() { return writer_; }
  [[nodiscard]] const std::vector<Growth>& growth() const { return growth_; }

 private:
  /// What was cut last holds all pictures before the latest key frame.
  void noteGrowth() {
    const std::uintmax_t size = fs::file_size(file_);
    if (growth_.empty() ? size > 0 : size > growth_.back().size) {
      growth_.push_back({size, count_ / keyDistance * keyDistance});
    }
  }

  fs::path file_;
  int channels_;
  CaptureWriter writer_;
  TestSoundSource source_{std::max(channels_, 1)};
  int count_ = 0;
  std::vector<Growth> growth_;
};

/// The times of the pictures that can be decoded, each checked to be the one of its time.
std::vector<double> decodedTimes(const fs::path& file) {
  auto reader = VideoReader::open(file, 1);
  std::vector<double> times;
  if (!reader) {
    return times;
  }
  while (const auto frame = reader->next().value_or(std::nullopt)) {
    EXPECT_NEAR(meanLuma(*frame), shadeOf(static_cast<int>(times.size())), 4);
    times.push_back(frame->pts);
  }
  return times;
}

std::vector<double> keyTimes(const fs::path& file) {
  std::vector<double> times;
  for (const auto& packet : inspect(file).packets) {
    if (packet.isKey) {
      times.push_back(packet.pts);
    }
  }
  return times;
}

ino_t inodeOf(const fs::path& file) {
  struct stat status{};
  EXPECT_EQ(::stat(file.c_str(), &status), 0);
  return status.st_ino;
}

class CaptureWriterTest : public testing::Test {
 protected:
  TemporaryFolder folder;
  fs::path file = folder / "screen.mov";
};

class EveryProcessorEncoder : public CaptureWriterTest,
                              public testing::WithParamInterface<const char*> {};

INSTANTIATE_TEST_SUITE_P(CaptureWriter, EveryProcessorEncoder,
                         testing::Values("libx265", "libx264-superfast", "libx264-ultrafast"),
                         [](const auto& each) {
                           std::string name = each.param;
                           std::ranges::replace(name, '-', '_');
                           return name;
                         });

TEST_P(EveryProcessorEncoder, writesEveryPictureAtItsTime) {
  Take take(file, takeSettings(GetParam()));
  take.write(75);
  ASSERT_TRUE(take.writer().finish());
  const auto times = decodedTimes(file);
  ASSERT_THAT(times, SizeIs(75));
  for (std::size_t i = 0; i < times.size(); ++i) {
    EXPECT_NEAR(times[i], static_cast<double>(i) / fps, 1.0 / 240'000 + 1e-9);
  }
}

TEST_P(EveryProcessorEncoder, putsAKeyFrameEveryTwoSeconds) {
  Take take(file, takeSettings(GetParam()));
  take.write(5 * keyDistance / 2);
  ASSERT_TRUE(take.writer().finish());
  EXPECT_THAT(keyTimes(file), ElementsAre(0, 2, 4));
}

TEST_P(EveryProcessorEncoder, tellsTheCodecAndTheColours) {
  Take take(file, takeSettings(GetParam()));
  take.write(3);
  ASSERT_TRUE(take.writer().finish());
  const StoredMovie movie = inspect(file);
  const bool isHevc = movie.codec == "hevc";
  EXPECT_EQ(movie.codec, isHevc ? "hevc" : "h264");
  EXPECT_EQ(isHevc, std::string(GetParam()) == "libx265");
  EXPECT_EQ(movie.tag, isHevc ? "hvc1" : "avc1");
  EXPECT_TRUE(movie.saysBt709);
  EXPECT_TRUE(movie.saysLimited);
}

TEST_F(CaptureWriterTest, keepsStampsToA120000thOfASecond) {
  auto writer = CaptureWriter::create(file, takeSettings()).value();
  std::vector<std::int64_t> ticks;
  std::mt19937 random(1);
  HostTime stamp = takeStart;
  for (int i = 0; i < 40; ++i) {
    ASSERT_TRUE(writer.write(flatPicture(i), stamp));
    ticks.push_back(std::llround(static_cast<double>((stamp - takeStart).count()) * 120'000 / 1e9));
    stamp += HostTime(1'000'000 + random() % 40'000'000);
  }
  ASSERT_TRUE(writer.finish());
  const StoredTrack track = storedPicture(file);
  EXPECT_EQ(track.ticksPerSecond, 120'000);
  std::vector<std::int64_t> stored;
  for (const StoredPacket& packet : track.packets) {
    stored.push_back(packet.pts);
  }
  EXPECT_EQ(stored, ticks);
  EXPECT_EQ(track.end, ticks.back() + 2000);
}

TEST_F(CaptureWriterTest, leavesOutAPictureThatIsNotLater) {
  auto writer = CaptureWriter::create(file, takeSettings()).value();
  for (const double time : {0.0, 0.1, 0.1, 0.05, 0.2}) {
    ASSERT_TRUE(writer.write(flatPicture(0), takeTime(time)));
  }
  ASSERT_TRUE(writer.finish());
  EXPECT_THAT(inspect(file).packets, SizeIs(3));
}

TEST_F(CaptureWriterTest, repeatsTheLatestPicture) {
  auto writer = CaptureWriter::create(file, takeSettings()).value();
  ASSERT_TRUE(writer.repeatLatest(takeTime(0)));
  ASSERT_TRUE(writer.write(flatPicture(0), takeTime(0)));
  ASSERT_TRUE(writer.repeatLatest(takeTime(5)));
  ASSERT_TRUE(writer.finish());
  const auto packets = inspect(file).packets;
  ASSERT_THAT(packets, SizeIs(2));
  EXPECT_NEAR(packets[1].pts, 5, 1e-5);
  EXPECT_NEAR(VideoReader::open(file)->info().duration, 5 + 1.0 / 60, 1e-3);
}

TEST_F(CaptureWriterTest, ofAStillScreenAllButTheLastEightSecondsAreWrittenForGood) {
  auto writer = CaptureWriter::create(file, takeSettings()).value();
  ASSERT_TRUE(writer.stillAt(takeTime(0)));
  ASSERT_TRUE(writer.write(flatPicture(0), takeTime(0)));
  for (int frame = 1; frame <= 30 * fps; ++frame) {
    const double now = static_cast<double>(frame) / fps;
    ASSERT_TRUE(writer.stillAt(takeTime(now)));
    if (now > 8 && frame % 11 == 0) {
      fs::copy_file(file, folder / "killed.mov", fs::copy_options::overwrite_existing);
      ASSERT_TRUE(joinFragments(folder / "killed.mov")) << now;
      EXPECT_GE(VideoReader::open(folder / "killed.mov")->info().duration, now - 8.05) << now;
    }
  }
  ASSERT_TRUE(writer.finish());
  EXPECT_THAT(inspect(file).packets, SizeIs(4));
}

TEST_F(CaptureWriterTest, growsByAPartAtEachKeyFrame) {
  Take take(file, takeSettings());
  take.write(4 * keyDistance + 2);
  std::vector<int> pictures;
  for (const Growth& growth : take.growth()) {
    pictures.push_back(growth.pictures);
  }
  EXPECT_THAT(pictures,
              ElementsAre(keyDistance, 2 * keyDistance, 3 * keyDistance, 4 * keyDistance));
}

TEST_F(CaptureWriterTest, soundAloneGrowsEveryFourSeconds) {
  CaptureSettings settings;
  settings.kind = GrowingFile::sound;
  settings.sound = {.channels = 1, .bitRate = 128'000};
  auto writer = CaptureWriter::create(file, settings).value();
  TestSoundSource source(1);
  while (source.time() < 21) {
    ASSERT_TRUE(writer.write(source.next()));
    if (source.time() > 4.1) {
      fs::copy_file(file, folder / "killed.m4a", fs::copy_options::overwrite_existing);
      ASSERT_GE(static_cast<double>(played(folder / "killed.m4a").size()) / soundRate,
                source.time() - 4.2);
      source.lose(0);
    }
    for (int i = 0; i < 20 && source.time() < 21; ++i) {
      ASSERT_TRUE(writer.write(source.next()));
    }
  }
  ASSERT_TRUE(writer.finish());
}

/// Whoever is killed leaves a file of any length behind, from a cut on.
TEST_P(EveryProcessorEncoder, whatWasCutCanBePlayedWhereverTheFileEnds) {
  Take take(file, takeSettings(GetParam(), 2));
  take.write(9 * fps);
  const std::string bytes = bytesOf(file);
  ASSERT_GE(take.growth().size(), 4U);

  std::mt19937 random(7);
  const fs::path killed = folder / "killed.mov";
  for (int i = 0; i < 25; ++i) {
    const auto first = take.growth().front().size;
    const auto length = first + random() % (bytes.size() - first + 1);
    const auto cut = std::ranges::upper_bound(take.growth(), length, {}, &Growth::size) - 1;
    writeBytes(killed, std::string_view(bytes).substr(0, length));
    EXPECT_GE(decodedTimes(killed).size(), static_cast<std::size_t>(cut->pictures)) << length;

    ASSERT_TRUE(joinFragments(killed)) << length;
    EXPECT_THAT(decodedTimes(killed), SizeIs(static_cast<std::size_t>(cut->pictures))) << length;
    EXPECT_THAT(inspect(killed).boxes, Not(Contains("moof")));
    EXPECT_FALSE(VideoReader::open(killed)->info().truncated);
  }
}

TEST_F(CaptureWriterTest, finishingMakesAPlainMovieAndMovesNoMedia) {
  Take take(file, takeSettings("libx264-ultrafast", 2));
  take.write(5 * fps);
  const ino_t inode = inodeOf(file);
  const std::string before = bytesOf(file);
  ASSERT_TRUE(take.writer().finish());

  EXPECT_EQ(inodeOf(file), inode);
  const std::string after = bytesOf(file);
  const std::size_t firstIndex = before.find("moov") - 4;
  constexpr std::size_t header = 16;
  EXPECT_EQ(after.substr(0, firstIndex), before.substr(0, firstIndex));
  EXPECT_EQ(after.substr(firstIndex + header, before.size() - firstIndex - header),
            before.substr(firstIndex + header));
  EXPECT_THAT(inspect(file).boxes, ElementsAre("ftyp", "mdat", "moov"));
}

TEST_F(CaptureWriterTest, aFinishedMovieHasThePacketsOfTheGrowingOne) {
  Take take(file, takeSettings("libx265", 2));
  take.write(2 * keyDistance + 1);
  const fs::path grown = folder / "grown.mov";
  fs::copy_file(file, grown);
  ASSERT_TRUE(take.writer().finish());
  const auto growing = storedPicture(grown);
  auto finished = storedPicture(file);
  ASSERT_GE(growing.packets.size(), static_cast<std::size_t>(2 * keyDistance));
  finished.packets.resize(growing.packets.size());
  EXPECT_EQ(finished.packets, growing.packets);
  const auto growingSound = storedSound(grown).payloads();
  auto finishedSound = storedSound(file).payloads();
  ASSERT_GE(finishedSound.size(), growingSound.size());
  finishedSound.resize(growingSound.size());
  EXPECT_EQ(finishedSound, growingSound);
}

TEST_F(CaptureWriterTest, thePictureStartsAtZeroAndTheSoundIsWhereItWas) {
  for (const char* encoder : {"libx265", "libx264-ultrafast"}) {
    auto writer = CaptureWriter::create(file, takeSettings(encoder, 2)).value();
    TestSoundSource source(2, beepAt(1.5));
    for (int i = 0; i < 3 * fps; ++i) {
      const double time = 0.25 + static_cast<double>(i) / fps;
      ASSERT_TRUE(writer.write(flatPicture(i), takeTime(time)));
      while (source.time() < time) {
        ASSERT_TRUE(writer.write(source.next()));
      }
    }
    const fs::path killed = folder / "killed.mov";
    fs::copy_file(file, killed, fs::copy_options::overwrite_existing);
    ASSERT_TRUE(writer.finish());
    for (const fs::path& each : {file, killed}) {
      EXPECT_EQ(inspect(each).packets.front().pts, 0) << encoder << each;
      EXPECT_NEAR(beepTime(played(each)), 1.25, 0.001) << encoder << each;
    }
  }
}

TEST_F(CaptureWriterTest, soundBeforeTheFirstPictureIsLeftOut) {
  auto writer = CaptureWriter::create(file, takeSettings("libx264-ultrafast", 1)).value();
  TestSoundSource source(1, [](double time) { return time < 1 ? 0.5F : 0.0F; });
  while (source.time() < 1) {
    ASSERT_TRUE(writer.write(source.next()));
  }
  ASSERT_TRUE(writer.write(flatPicture(0), takeTime(1)));
  while (source.time() < 3) {
    ASSERT_TRUE(writer.write(source.next()));
  }
  ASSERT_TRUE(writer.write(flatPicture(1), takeTime(3)));
  ASSERT_TRUE(writer.finish());
  const auto sound = played(file);
  EXPECT_NEAR(static_cast<double>(sound.size()), 2.0 * soundRate, 1500);
  EXPECT_LT(loudness(sound, 0, 2), 0.001);
}

TEST_F(CaptureWriterTest, lostSoundIsSilentAndWhatFollowsStaysInPlace) {
  CaptureSettings settings;
  settings.kind = GrowingFile::sound;
  settings.sound = {.channels = 1, .bitRate = 128'000};
  auto writer = CaptureWriter::create(file, settings).value();
  TestSoundSource source(1, beepAt(4));
  while (source.time() < 6) {
    ASSERT_TRUE(writer.write(source.next()));
    if (std::abs(source.time() - 2) < 0.005) {
      source.lose(60);
    }
  }
  ASSERT_TRUE(writer.finish());
  const auto sound = played(file);
  EXPECT_NEAR(beepTime(sound), 4, 0.001);
  EXPECT_NEAR(static_cast<double>(sound.size()) / soundRate, 6, 0.005 + 0.022);
}

TEST_F(CaptureWriterTest, picturesGoOnWhereTheSoundStops) {
  auto writer = CaptureWriter::create(file, takeSettings("libx264-ultrafast", 2)).value();
  TestSoundSource source(2);
  for (int i = 0; i < 9 * fps; ++i) {
    const double time = static_cast<double>(i) / fps;
    ASSERT_TRUE(writer.write(flatPicture(i), takeTime(time)));
    while (source.time() < std::min(time, 1.0)) {
      ASSERT_TRUE(writer.write(source.next()));
    }
  }
  ASSERT_TRUE(writer.finish());
  const auto sound = played(file);
  EXPECT_GT(loudness(sound, 0.1, 0.9), 0.1);
  EXPECT_LT(loudness(sound, 1.2, 7.5), 0.001);
}

TEST_F(CaptureWriterTest, whileTheFirstPictureStandsItsSoundIsWrittenForGood) {
  auto writer = CaptureWriter::create(file, takeSettings("libx264-ultrafast", 2)).value();
  ASSERT_TRUE(writer.write(flatPicture(0), takeTime(0.25)));
  TestSoundSource source(2, beepAt(1.5));
  while (source.time() < 6) {
    ASSERT_TRUE(writer.write(source.next()));
  }
  const fs::path killed = folder / "killed.mov";
  fs::copy_file(file, killed);
  EXPECT_NEAR(beepTime(played(killed)), 1.25, 0.001);
  ASSERT_TRUE(writer.write(flatPicture(1), takeTime(6.25)));
  ASSERT_TRUE(writer.finish());
  const auto packets = inspect(file).packets;
  ASSERT_THAT(packets, SizeIs(2));
  EXPECT_EQ(packets[0].pts, 0);
  EXPECT_NEAR(packets[1].pts, 6, 1e-5);
  EXPECT_NEAR(beepTime(played(file)), 1.25, 0.001);
}

TEST_F(CaptureWriterTest, tenMinutesOfAFastSourceWithGapsLastTenMinutes) {
  CaptureSettings settings;
  settings.kind = GrowingFile::sound;
  settings.sound = {.channels = 1, .bitRate = 128'000};
  auto writer = CaptureWriter::create(file, settings).value();
  TestSoundSource source(1, beepAt(599), 200);
  std::mt19937 random(2);
  while (source.time() < 600) {
    ASSERT_TRUE(writer.write(source.next()));
    if (random() % 500 == 0 && source.time() < 590) {
      source.lose(1 + static_cast<int>(random() % 50));
    }
  }
  ASSERT_TRUE(writer.finish());
  const StoredTrack track = storedSound(file);
  EXPECT_NEAR(static_cast<double>(track.end) / track.ticksPerSecond, source.time(), 0.005);
  EXPECT_NEAR(beepTime(played(file)), 599, 0.005);
}

TEST_F(CaptureWriterTest, aFileIntoWhichNothingCameIsRemoved) {
  auto writer = CaptureWriter::create(file, takeSettings("libx264-ultrafast", 2)).value();
  ASSERT_TRUE(writer.write(TestSoundSource(2).next()));
  EXPECT_TRUE(writer.finish());
  EXPECT_FALSE(fs::exists(file));
}

TEST_F(CaptureWriterTest, oneThatIsLetGoUnfinishedKeepsWhatWasCut) {
  {
    Take take(file, takeSettings());
    take.write(3 * keyDistance / 2);
  }
  EXPECT_THAT(decodedTimes(file), SizeIs(keyDistance));
}

TEST_F(CaptureWriterTest, aSinglePictureMakesAMovie) {
  auto writer = CaptureWriter::create(file, takeSettings("libx265")).value();
  ASSERT_TRUE(writer.write(flatPicture(0), takeTime(0)));
  ASSERT_TRUE(writer.finish());
  EXPECT_THAT(decodedTimes(file), ElementsAre(0));
}

TEST_F(CaptureWriterTest, aFullDiskIsToldAndWhatWasCutStays) {
  auto writer = CaptureWriter::create(file, takeSettings()).value();
  CaptureWriter::Outcome outcome;
  {
    const test::FileSizeLimit limit(200'000);
    for (int i = 0; outcome && i < 60 * fps; ++i) {
      outcome = writer.write(roughPicture(i), takeTime(static_cast<double>(i) / fps));
    }
    ASSERT_FALSE(outcome);
    EXPECT_FALSE(writer.write(roughPicture(0), takeTime(100)));
    EXPECT_EQ(writer.finish(), outcome);
  }
  EXPECT_EQ(outcome.error().kind, Kind::diskFull);
  EXPECT_THAT(outcome.error().message, HasSubstr("没有写完"));
  const auto packets = inspect(file).packets;
  EXPECT_FALSE(packets.empty());
  EXPECT_EQ(packets.size() % keyDistance, 0U);
  EXPECT_TRUE(joinFragments(file));
  EXPECT_EQ(inspect(file).packets.size(), packets.size());
}

TEST_F(CaptureWriterTest, aDiskThatIsFullOnlyForTheIndexLeavesAMovie) {
  Take take(file, takeSettings());
  take.write(2 * keyDistance + 1);
  std::optional<CaptureWriter::Outcome> outcome;
  {
    const test::FileSizeLimit limit(fs::file_size(file) + 1000);
    outcome = take.writer().finish();
  }
  ASSERT_FALSE(*outcome);
  EXPECT_EQ(outcome->error().kind, Kind::diskFull);
  EXPECT_GE(decodedTimes(file).size(), static_cast<std::size_t>(2 * keyDistance));
}

TEST_F(CaptureWriterTest, aMissingFolderIsToldAtOnce) {
  const auto writer = CaptureWriter::create(folder / "gone" / "screen.mov", takeSettings());
  ASSERT_FALSE(writer);
  EXPECT_EQ(writer.error().kind, Kind::writeFailed);
  EXPECT_THAT(writer.error().message, HasSubstr("不存在"));
}

TEST_F(CaptureWriterTest, anImpossibleSizeIsToldAndLeavesNoFile) {
  CaptureSettings settings = takeSettings();
  settings.pictures->width = 161;
  const auto writer = CaptureWriter::create(file, settings);
  ASSERT_FALSE(writer);
  EXPECT_EQ(writer.error().kind, Kind::unsupported);
  EXPECT_FALSE(fs::exists(file));
}

}  // namespace
}  // namespace vesk::media
