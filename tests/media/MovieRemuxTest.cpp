#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>

#include "ProcessLimits.h"
#include "media/MovieRemux.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/TestSound.h"

namespace vesk::media {
namespace {

namespace fs = std::filesystem;

class MovieRemuxTest : public testing::TestWithParam<Container> {
 protected:
  MovieRemuxTest() {
    makeSilentMovie(picture_, GetParam(), 121);
    makeSound(system_, {.channels = 2, .seconds = 2, .wave = tone(440, 0.3F)});
    makeSound(mic_, {.seconds = 3, .wave = beep(1)});
  }

  MovieRemux remux(std::vector<SoundClip> sounds) const {
    return {.picture = picture_, .sounds = std::move(sounds), .container = GetParam()};
  }

  void write(std::vector<SoundClip> sounds) {
    const auto written = remux(std::move(sounds)).write(movie_);
    ASSERT_TRUE(written) << written.error().message;
  }

  TemporaryFolder folder_;
  fs::path picture_ = folder_ / "silent";
  fs::path system_ = folder_ / "system.m4a";
  fs::path mic_ = folder_ / "mic.m4a";
  fs::path movie_ = folder_ / "movie";
};

TEST_P(MovieRemuxTest, thePictureStaysAsItWas) {
  write({{.file = system_, .length = 2}});
  const StoredTrack before = storedPicture(picture_);
  const StoredTrack after = storedPicture(movie_);
  EXPECT_TRUE(after.packets == before.packets);
  EXPECT_EQ(after.packets.size(), 121U);
  EXPECT_EQ(after.ticksPerSecond, before.ticksPerSecond);
  EXPECT_EQ(after.tag, GetParam() == Container::mp4 ? "avc1" : "hvc1");
  EXPECT_TRUE(after.saysBt709);
}

TEST_P(MovieRemuxTest, theSoundsPassPacketForPacket) {
  write({{.file = system_, .length = 2}, {.file = mic_, .start = 0.25, .length = 5}});
  EXPECT_EQ(soundTrackCount(movie_), 2);
  EXPECT_TRUE(storedSound(movie_, 0).packets == storedSound(system_).packets);
  const StoredTrack mic = storedSound(mic_);
  const StoredTrack placed = storedSound(movie_, 1);
  EXPECT_TRUE(placed.payloads() == mic.payloads());
  ASSERT_EQ(placed.packets.size(), mic.packets.size());
  for (std::size_t i = 0; i < mic.packets.size(); ++i) {
    EXPECT_EQ(placed.packets[i].pts, mic.packets[i].pts + 12'000) << i;
  }
  EXPECT_EQ(placed.end, mic.end + 12'000);
}

TEST_P(MovieRemuxTest, aBeepStandsToTheSampleWhereItsClipSays) {
  const double recorded = beepTime(played(mic_));
  // Shorter and longer than what the encoder needs to start up.
  for (const double start : {0.0, 1 / 600.0, 6 / 600.0, 13 / 600.0, 110 / 600.0, 0.5}) {
    write({{.file = mic_, .start = start, .length = 5}});
    EXPECT_NEAR(beepTime(played(movie_)), recorded + start, 1e-9) << start;
    fs::remove(movie_);
  }
}

TEST_P(MovieRemuxTest, allTracksPlayTogether) {
  write({{.file = system_, .length = 2}, {.file = mic_, .length = 2}});
  EXPECT_TRUE(storedSound(movie_, 0).isEnabled);
  EXPECT_TRUE(storedSound(movie_, 1).isEnabled);
  const std::string bytes = bytesOf(movie_);
  std::vector<std::string> groups;  // of alternatives, of which a player chooses one
  for (std::size_t at = bytes.find("tkhd"); at != std::string::npos;
       at = bytes.find("tkhd", at + 1)) {
    groups.push_back(bytes.substr(at + 4 + 34, 2));
  }
  ASSERT_EQ(groups.size(), 3U);
  EXPECT_NE(groups[1], groups[2]);
}

TEST_P(MovieRemuxTest, theIndexStandsInFront) {
  write({{.file = system_, .length = 2}});
  const auto boxes = inspect(movie_).boxes;
  EXPECT_LT(std::ranges::find(boxes, "moov"), std::ranges::find(boxes, "mdat"));
}

TEST_P(MovieRemuxTest, aSoundIsCutAtItsLength) {
  write({{.file = mic_, .start = 0.5, .length = 1.5}});
  const StoredTrack track = storedSound(movie_);
  EXPECT_EQ(track.end, 96'000);
  EXPECT_LT(track.packets.back().pts, 96'000);
  EXPECT_GT(track.packets.back().pts, 96'000 - 1025);
}

TEST_P(MovieRemuxTest, aSoundThatCannotBeReadIsLeftOut) {
  writeBytes(folder_ / "garbage.m4a", std::string(9'000, 'q'));
  writeBytes(folder_ / "short.m4a", bytesOf(mic_).substr(0, fs::file_size(mic_) / 2));
  write({{.file = folder_ / "garbage.m4a", .length = 2},
         {.file = folder_ / "missing.m4a", .length = 2},
         {.file = folder_ / "short.m4a", .length = 2},
         {.file = picture_, .length = 2},
         {.file = system_, .length = 2}});
  EXPECT_EQ(soundTrackCount(movie_), 1);
  EXPECT_TRUE(storedSound(movie_).packets == storedSound(system_).packets);
  EXPECT_EQ(storedPicture(movie_).packets.size(), 121U);
}

TEST_P(MovieRemuxTest, aSoundThatBreaksOffIsTakenAsFarAsItGoes) {
  const fs::path fast = folder_ / "fast.m4a";
  ASSERT_TRUE(
      (MovieRemux{.picture = picture_, .sounds = {{.file = mic_, .length = 3}}}).write(fast));
  writeBytes(fast, bytesOf(fast).substr(0, fs::file_size(fast) * 4 / 5));
  write({{.file = fast, .length = 5}});
  const auto whole = storedSound(mic_).payloads();
  const auto part = storedSound(movie_).payloads();
  ASSERT_GT(part.size(), 10U);
  ASSERT_LT(part.size(), whole.size());
  EXPECT_TRUE(std::equal(part.begin(), part.end(), whole.begin()));
}

TEST_P(MovieRemuxTest, aSoundOfWhichNothingIsTakenLeavesThePicture) {
  write({{.file = mic_, .start = 1, .length = 0}});
  EXPECT_EQ(soundTrackCount(movie_), 0);
  EXPECT_TRUE(storedPicture(movie_).packets == storedPicture(picture_).packets);
}

TEST_P(MovieRemuxTest, aPictureThatBreaksOffIsAnError) {
  writeBytes(picture_, bytesOf(picture_).substr(0, fs::file_size(picture_) * 2 / 3));
  const auto written = remux({{.file = system_, .length = 2}}).write(movie_);
  ASSERT_FALSE(written);
  EXPECT_EQ(written.error().message, "“silent” 不完整或已损坏");
  EXPECT_FALSE(fs::exists(movie_));
}

TEST_P(MovieRemuxTest, aMovieWithoutAPictureIsAnError) {
  const auto written =
      MovieRemux{.picture = mic_, .sounds = {{.file = system_, .length = 2}}}.write(movie_);
  ASSERT_FALSE(written);
  EXPECT_EQ(written.error().kind, MediaError::Kind::noVideoTrack);
  EXPECT_FALSE(fs::exists(movie_));
}

TEST_P(MovieRemuxTest, aDiskThatFillsUpNamesTheMovieAndNothingRemains) {
  const auto whole = fs::file_size(picture_) + fs::file_size(system_);
  for (const rlim_t room : {rlim_t{0}, rlim_t{2'000}, rlim_t{whole / 2}, rlim_t{whole - 3'000}}) {
    std::expected<void, MediaError> written;
    {
      const test::FileSizeLimit limit(room);
      written = remux({{.file = system_, .length = 2}}).write(movie_);
    }
    ASSERT_FALSE(written) << room;
    EXPECT_EQ(written.error(),
              (MediaError{MediaError::Kind::diskFull, "“silent” 超过了允许的文件大小，没有写完"}));
    EXPECT_FALSE(fs::exists(movie_)) << room;
  }
}

INSTANTIATE_TEST_SUITE_P(Containers, MovieRemuxTest,
                         testing::Values(Container::mp4, Container::mov), [](const auto& param) {
                           return param.param == Container::mp4 ? "mp4" : "mov";
                         });

}  // namespace
}  // namespace vesk::media
