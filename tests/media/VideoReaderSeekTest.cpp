#include <gtest/gtest.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <filesystem>
#include <limits>
#include <optional>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "media/Sightings.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/VideoReader.h"

namespace vesk::media {
namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();

VideoReader readerOf(const std::filesystem::path& file) {
  auto reader = VideoReader::open(file);
  if (!reader) throw std::runtime_error(reader.error().message);
  return *std::move(reader);
}

std::optional<Sighting> nextOf(VideoReader& reader) {
  const auto picture = reader.next();
  return picture && *picture ? std::optional(sightingOf(**picture)) : std::nullopt;
}

/// Seeks at random and compares what comes, and what follows it, with reading from the beginning.
void expectSeeksLikeReading(const std::filesystem::path& file, int seeks) {
  const auto sightings = sightingsIn(file);
  ASSERT_FALSE(sightings.empty());
  auto reader = readerOf(file);
  std::mt19937 random(11);
  std::uniform_real_distribution<double> anywhere(sightings.front().pts - 0.1,
                                                  sightings.back().pts + 0.1);
  std::uniform_int_distribution<std::size_t> anyone(0, sightings.size() - 1);
  for (int round = 0; round < seeks; ++round) {
    const double time = round % 2 == 0 ? anywhere(random) : sightings[anyone(random)].pts;
    ASSERT_TRUE(reader.seek(time)) << time;
    const std::size_t first = indexAt(sightings, time);
    const std::size_t last = std::min(first + 5, sightings.size());
    for (std::size_t index = first; index < last; ++index) {
      ASSERT_EQ(nextOf(reader), sightings[index]) << "sought " << time << ", picture " << index;
    }
    if (last == sightings.size()) {
      ASSERT_EQ(nextOf(reader), std::nullopt);
    }
  }
}

struct SeekCase {
  std::string name;
  MovieRecipe recipe;
};

std::vector<std::int64_t> unevenTicks(int count) {
  std::mt19937 random(3);
  std::vector<std::int64_t> ticks{0};
  while (static_cast<int>(ticks.size()) < count) {
    ticks.push_back(ticks.back() + 1 + static_cast<std::int64_t>(random() % 400));
  }
  return ticks;
}

class VideoReaderSeeks : public testing::TestWithParam<SeekCase> {};

TEST_P(VideoReaderSeeks, giveThePicturesOfReadingFromTheBeginning) {
  const TemporaryFolder folder;
  const auto file = folder / "screen.mov";
  makeMovie(file, GetParam().recipe);
  expectSeeksLikeReading(file, 60);
}

INSTANTIATE_TEST_SUITE_P(
    Movies, VideoReaderSeeks,
    testing::Values(
        SeekCase{"even", {.ticks = evenTicks(80, 20)}},
        SeekCase{"bFrames", {.ticks = evenTicks(80, 20), .bFrames = 3}},
        SeekCase{"unevenBFrames", {.ticks = unevenTicks(90), .bFrames = 3}},
        SeekCase{"firstStampNotZero", {.ticks = evenTicks(40, 20, 100'000), .bFrames = 2}},
        SeekCase{"oneKeyFrame", {.ticks = unevenTicks(70), .bFrames = 2, .keyFrameInterval = 900}},
        SeekCase{"onlyKeyFrames", {.ticks = unevenTicks(30), .keyFrameInterval = 1}},
        SeekCase{"openGroupsOfHevc",
                 {.encoder = "libx265", .ticks = unevenTicks(60), .bFrames = 3}},
        SeekCase{
            "fragments",
            {.ticks = evenTicks(60, 25), .bFrames = 2, .movFlags = "+frag_keyframe+empty_moov"}},
        SeekCase{"sound", {.ticks = evenTicks(40, 50), .withSound = true}},
        SeekCase{"aChangeOfSize", {.ticks = evenTicks(40, 40), .smallerFrom = 20}}),
    [](const auto& movie) { return movie.param.name; });

class VideoReaderSeek : public testing::Test {
 protected:
  VideoReader make(const MovieRecipe& recipe) {
    makeMovie(file_, recipe);
    return readerOf(file_);
  }

  TemporaryFolder folder_;
  std::filesystem::path file_ = folder_ / "screen.mov";
};

TEST_F(VideoReaderSeek, theSharedTakesAreSoughtExactly) {
  expectSeeksLikeReading(VESK_SAMPLE_TAKE "/screen.mov", 6);
  expectSeeksLikeReading(VESK_SAMPLE_TAKE "/camera.mov", 6);
  expectSeeksLikeReading(VESK_MARKS_TAKE "/screen.mov", 6);
}

TEST_F(VideoReaderSeek, aMovieThatIsEditedToBeginInsideAGroupIsSoughtExactly) {
  makeMovie(file_, {.ticks = evenTicks(60, 40), .keyFrameInterval = 20});
  std::string bytes = bytesOf(file_);
  const auto edits = bytes.find("elst");
  ASSERT_NE(edits, std::string::npos);
  ASSERT_EQ(bytes.substr(edits + 8, 4), std::string("\0\0\0\1", 4)) << "one edit";
  bytes.replace(edits + 16, 4, std::string("\0\0\x19\0", 4));  // its start: 6400 ticks of 1/16000 s
  writeBytes(file_, bytes);
  ASSERT_EQ(sightingsIn(file_).size(), 50U);
  EXPECT_EQ(sightingsIn(file_).front().pts, 0);
  expectSeeksLikeReading(file_, 40);
}

TEST_F(VideoReaderSeek, timesOutsideTheMovieGiveItsFirstAndItsLastPicture) {
  auto reader = make({.ticks = evenTicks(30, 40), .bFrames = 2});
  const auto sightings = sightingsIn(file_);
  for (const double early : {-1.0, -1e300, -infinity, std::numeric_limits<double>::quiet_NaN()}) {
    ASSERT_TRUE(reader.seek(early));
    EXPECT_EQ(nextOf(reader), sightings.front()) << early;
    EXPECT_EQ(nextOf(reader), sightings[1]) << early;
  }
  for (const double late : {sightings.back().pts, 100.0, 1e300, infinity}) {
    ASSERT_TRUE(reader.seek(late));
    EXPECT_EQ(nextOf(reader), sightings.back()) << late;
    EXPECT_EQ(nextOf(reader), std::nullopt) << late;
  }
}

TEST_F(VideoReaderSeek, theEndIsNoObstacle) {
  auto reader = make({.ticks = evenTicks(30, 40), .bFrames = 2});
  const auto sightings = sightingsIn(file_);
  while (nextOf(reader)) {
  }
  ASSERT_TRUE(reader.seek(0.41));
  EXPECT_EQ(nextOf(reader), sightings[10]);
}

TEST_F(VideoReaderSeek, aCutMovieGivesItsLastReadablePictureAndThenFails) {
  makeMovie(file_, {.ticks = evenTicks(200, 20), .bFrames = 2, .movFlags = "+faststart"});
  const std::string bytes = bytesOf(file_);
  writeBytes(file_, std::string_view(bytes).substr(0, bytes.size() / 2));
  const auto sightings = sightingsIn(file_);
  ASSERT_GT(sightings.size(), 10U);
  ASSERT_LT(sightings.size(), 190U);
  auto reader = readerOf(file_);
  for (const double beyond : {sightings.back().pts + 0.1, 3.9, 1e9}) {
    ASSERT_TRUE(reader.seek(beyond));
    EXPECT_EQ(nextOf(reader), sightings.back()) << beyond;
    EXPECT_FALSE(reader.next());
  }
  ASSERT_TRUE(reader.seek(0.1));
  EXPECT_EQ(nextOf(reader), sightings[5]);
}

TEST_F(VideoReaderSeek, whereAKeyFrameIsDamagedThePictureBeforeItStands) {
  const auto destroyTheThirdKeyFrame = [](int index, std::span<std::uint8_t> packet) {
    if (index >= 20 && index < 30) std::ranges::fill(packet, std::uint8_t{0xff});
  };
  auto reader =
      make({.ticks = evenTicks(60, 40), .keyFrameInterval = 10, .damage = destroyTheThirdKeyFrame});
  const auto sightings = sightingsIn(file_);
  ASSERT_EQ(sightings.size(), 50U);
  ASSERT_TRUE(reader.seek(1.0));
  EXPECT_EQ(nextOf(reader), sightings[19]);
  EXPECT_EQ(nextOf(reader), sightings[20]);
}

TEST_F(VideoReaderSeek, aMovieOfWhichNothingDecodesStillFails) {
  const auto destroyAll = [](int, std::span<std::uint8_t> packet) {
    std::ranges::fill(packet, std::uint8_t{0xff});
  };
  auto reader = make({.ticks = evenTicks(40, 25), .damage = destroyAll});
  EXPECT_TRUE(reader.seek(0.9));
  EXPECT_FALSE(reader.next());
}

TEST_F(VideoReaderSeek, aMovieWithoutASampleHasNothingToSeek) {
  auto reader = make({.ticks = {}, .movFlags = "+frag_keyframe+empty_moov"});
  (void)reader.seek(1);
  EXPECT_EQ(nextOf(reader), std::nullopt);
}

TEST_F(VideoReaderSeek, flippedBytesNeverDoMoreThanFail) {
  makeMovie(file_, {.width = 32, .height = 32, .ticks = evenTicks(24, 40), .bFrames = 1});
  const std::string bytes = bytesOf(file_);
  std::mt19937 random(20240608);
  for (int round = 0; round < 150; ++round) {
    std::string damaged = bytes;
    for (int flips = 0; flips < 6; ++flips) {
      damaged[random() % damaged.size()] = static_cast<char>(random());
    }
    writeBytes(file_, damaged);
    auto reader = VideoReader::open(file_);
    for (const double time : {0.5, 0.1, 1e9}) {
      if (!reader || !reader->seek(time)) continue;
      double latest = -infinity;
      for (int count = 0; count < 40; ++count) {
        const auto picture = reader->next();
        if (!picture || !*picture) break;
        EXPECT_GE((*picture)->pts, latest);
        latest = (*picture)->pts;
      }
    }
  }
}

TEST_F(VideoReaderSeek, fromAKeyFrameAllPicturesUpToTheTimeCome) {
  auto reader = make({.ticks = evenTicks(40, 40), .bFrames = 2, .keyFrameInterval = 10});
  const auto sightings = sightingsIn(file_);
  ASSERT_TRUE(reader.seekKeyFrame(1.0));
  for (std::size_t index = 20; index < 40; ++index) {
    EXPECT_EQ(nextOf(reader), sightings[index]);
  }
}

TEST_F(VideoReaderSeek, theIndexTellsTheKeyFrames) {
  auto reader = make({.ticks = evenTicks(40, 40), .bFrames = 2, .keyFrameInterval = 10});
  while (nextOf(reader)) {
  }
  EXPECT_NEAR(reader.keyFrameBefore(0.39), 0, 1e-9);
  EXPECT_NEAR(reader.keyFrameBefore(0.4000001), 0.4, 1e-9);
  EXPECT_NEAR(reader.keyFrameBefore(0.79), 0.4, 1e-9);
  EXPECT_NEAR(reader.keyFrameBefore(1e9), 1.2, 1e-9);
  EXPECT_LE(reader.keyFrameBefore(-1), 0);
}

TEST_F(VideoReaderSeek, anInterruptionEndsAllReading) {
  auto reader = make({.ticks = evenTicks(400, 20), .keyFrameInterval = 500});
  std::jthread interruptor([&] { reader.interrupt(); });
  while (reader.next()) {
  }
  interruptor.join();
  EXPECT_FALSE(reader.next());
  EXPECT_FALSE(reader.seekKeyFrame(3));
}

}  // namespace
}  // namespace vesk::media
