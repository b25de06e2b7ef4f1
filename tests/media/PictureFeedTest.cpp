#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <ctime>
#include <filesystem>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <random>
#include <span>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <utility>
#include <vector>

#include "media/PictureFeed.h"
#include "media/Sightings.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/TestTake.h"
#include "media/VideoWriter.h"

namespace vesk::media {
namespace {

using namespace std::chrono_literals;
using Clock = std::chrono::steady_clock;

constexpr double infinity = std::numeric_limits<double>::infinity();

std::unique_ptr<PictureFeed> feedOf(const std::filesystem::path& file,
                                    PictureFeed::Arrival arrival = {}) {
  auto feed = PictureFeed::open(file, std::move(arrival));
  if (!feed) throw std::runtime_error(feed.error().message);
  return *std::move(feed);
}

std::optional<Sighting> seen(const std::optional<VideoFrame>& picture) {
  return picture ? std::optional(sightingOf(*picture)) : std::nullopt;
}

/// Waits, for long enough on a busy machine, until something holds.
bool eventually(const std::function<bool()>& holds) {
  const auto deadline = Clock::now() + 60s;
  while (!holds()) {
    if (Clock::now() > deadline) return false;
    std::this_thread::sleep_for(1ms);
  }
  return true;
}

/// The picture at `time` once it is exact, without a wait inside the feed.
std::optional<Sighting> settled(PictureFeed& feed, double time) {
  return eventually([&] {
    (void)feed.pictureAt(time);
    return feed.isExactAt(time);
  })
             ? seen(feed.pictureAt(time))
             : std::nullopt;
}

void expectExactAnywhere(const std::filesystem::path& file, int rounds) {
  const auto sightings = sightingsIn(file);
  ASSERT_FALSE(sightings.empty());
  const auto feed = feedOf(file);
  EXPECT_EQ(feed->firstPTS(), sightings.front().pts);
  std::mt19937 random(5);
  std::uniform_real_distribution<double> anywhere(sightings.front().pts - 0.1,
                                                  sightings.back().pts + 0.1);
  for (int round = 0; round < rounds; ++round) {
    const double time = anywhere(random);
    for (std::uint32_t superseded = random() % 3; superseded > 0; --superseded) {
      feed->seek(anywhere(random));
    }
    feed->seek(time);
    const Sighting& expected = sightings[indexAt(sightings, time)];
    ASSERT_EQ(seen(feed->waitForPictureAt(time)), expected) << "sought " << time;
    ASSERT_TRUE(feed->isExactAt(time));
    ASSERT_EQ(seen(feed->pictureAt(time)), expected) << "sought " << time;
  }
}

/// Of a size of which the cache holds far fewer than the movie has, in one group.
MovieRecipe largeMovie(int pictures) {
  return {.width = 1920,
          .height = 1080,
          .ticks = evenTicks(pictures, 40),
          .bFrames = 2,
          .keyFrameInterval = 10'000};
}

class PictureFeedTest : public testing::Test {
 protected:
  std::filesystem::path make(const MovieRecipe& recipe) {
    makeMovie(file_, recipe);
    return file_;
  }

  TemporaryFolder folder_;
  std::filesystem::path file_ = folder_ / "screen.mov";
};

TEST_F(PictureFeedTest, beginsWithTheFirstPicture) {
  const auto feed = feedOf(make({.ticks = evenTicks(30, 40, 5'000)}));
  EXPECT_NEAR(feed->firstPTS(), 5, 1e-9);
  EXPECT_EQ(feed->info().width, 128);
  EXPECT_EQ(seen(feed->waitForPictureAt(0)), sightingsIn(file_).front());
}

TEST_F(PictureFeedTest, seeksLandOnTheExactPictureOfTheSharedTakes) {
  expectExactAnywhere(VESK_SAMPLE_TAKE "/screen.mov", 12);
  expectExactAnywhere(VESK_SAMPLE_TAKE "/camera.mov", 12);
  expectExactAnywhere(VESK_MARKS_TAKE "/screen.mov", 12);
}

TEST_F(PictureFeedTest, seeksLandOnTheExactPictureDespiteBFrames) {
  expectExactAnywhere(make({.ticks = evenTicks(120, 20), .bFrames = 3}), 60);
}

TEST_F(PictureFeedTest, seeksLandOnTheExactPictureOfUnevenLengths) {
  std::vector<std::int64_t> ticks{0};
  std::mt19937 random(9);
  while (ticks.size() < 100) {
    ticks.push_back(ticks.back() + 1 + static_cast<std::int64_t>(random() % 900));
  }
  expectExactAnywhere(make({.ticks = ticks, .bFrames = 2, .keyFrameInterval = 30}), 60);
}

TEST_F(PictureFeedTest, seeksLandOnTheExactPictureOfAMovieThatBeginsLate) {
  expectExactAnywhere(make({.ticks = evenTicks(60, 20, 90'000), .bFrames = 2}), 30);
}

TEST_F(PictureFeedTest, seeksLandOnTheExactPictureOfFragments) {
  expectExactAnywhere(
      make({.ticks = evenTicks(60, 25), .bFrames = 2, .movFlags = "+frag_keyframe+empty_moov"}),
      30);
}

TEST_F(PictureFeedTest, seeksLandOnTheExactPictureOfAnExport) {
  auto writer = VideoWriter::open(
      file_, {.width = takeWidth, .height = takeHeight, .fps = 30, .bitRate = 400'000});
  ASSERT_TRUE(writer) << writer.error().message;
  for (int index = 0; index < 150; ++index) {
    ASSERT_TRUE(writer->write(*roughPicture(index), index));
  }
  ASSERT_TRUE(writer->finish());
  expectExactAnywhere(file_, 40);
}

TEST_F(PictureFeedTest, seeksLandOnTheExactPictureWhereTheCacheIsSmall) {
  expectExactAnywhere(make(largeMovie(90)), 12);
}

TEST_F(PictureFeedTest, aTimeOnTheGridBelongsToItsOwnPicture) {
  const auto feed = feedOf(make({.ticksPerSecond = 600, .ticks = evenTicks(60, 20)}));
  for (int index = 0; index < 60; ++index) {
    const double justShort = std::nextafter(index / 30.0, -1.0);
    EXPECT_NEAR(feed->waitForPictureAt(justShort)->pts, index / 30.0, 1e-9);
  }
}

TEST_F(PictureFeedTest, whatIsSoughtArrives) {
  std::atomic<int> arrivals = 0;
  const auto feed = feedOf(make({.ticks = evenTicks(60, 40)}), [&] { ++arrivals; });
  const auto sightings = sightingsIn(file_);
  for (const int index : {50, 3, 3, 4, 59}) {
    const int before = arrivals;
    feed->seek(index * 0.04);
    ASSERT_TRUE(eventually([&] { return arrivals > before && feed->isExactAt(index * 0.04); }));
    EXPECT_EQ(seen(feed->pictureAt(index * 0.04)), sightings[static_cast<std::size_t>(index)]);
  }
}

TEST_F(PictureFeedTest, aPictureAskedForInVainArrives) {
  std::atomic<int> arrivals = 0;
  const auto feed = feedOf(make({.ticks = evenTicks(200, 40)}), [&] { ++arrivals; });
  const int before = arrivals;
  (void)feed->pictureAt(7.9);
  EXPECT_TRUE(eventually([&] { return feed->isExactAt(7.9); }));
  if (arrivals == before) {
    EXPECT_TRUE(eventually([&] { return arrivals > before; }));
  }
}

TEST_F(PictureFeedTest, theNewestOfManyRequestsWins) {
  const auto feed = feedOf(make(largeMovie(60)));
  const auto sightings = sightingsIn(file_);
  for (int round = 0; round < 4; ++round) {
    for (const int index : {59, 2, 40, 11, 57, 23 + round}) {
      feed->seek(index * 0.04);
    }
    const auto newest = static_cast<std::size_t>(23 + round);
    EXPECT_EQ(settled(*feed, 0.04 * (23 + round)), sightings[newest]);
  }
}

TEST_F(PictureFeedTest, playingForwardDecodesEachPictureOnce) {
  const auto feed = feedOf(make({.ticks = evenTicks(150, 40), .bFrames = 2}));
  const auto sightings = sightingsIn(file_);
  for (double time = 0; time < 6; time += 1.0 / 60) {
    ASSERT_EQ(settled(*feed, time), sightings[indexAt(sightings, time + 0.000001)]) << time;
  }
  EXPECT_EQ(feed->decodedPictures(), 150);
}

TEST_F(PictureFeedTest, aPlayheadThatOutrunsTheDecoderIsCaughtUpWith) {
  const auto feed = feedOf(make(largeMovie(120)));
  const auto sightings = sightingsIn(file_);
  double latest = 0;
  for (double time = 0; time < 4.7; time += 0.2) {
    const auto picture = feed->pictureAt(time);
    ASSERT_TRUE(picture);
    EXPECT_GE(picture->pts, latest) << "never back while it plays";
    EXPECT_LE(picture->pts, time + 0.000001);
    latest = picture->pts;
  }
  EXPECT_EQ(settled(*feed, 4.7), sightings[indexAt(sightings, 4.7)]);
  EXPECT_LE(feed->decodedPictures(), 120) << "it went on, not back to the key frame";
}

TEST_F(PictureFeedTest, aJumpWithoutASeekIsFollowed) {
  const auto feed = feedOf(make({.ticks = evenTicks(300, 40), .keyFrameInterval = 25}));
  const auto sightings = sightingsIn(file_);
  for (const int index : {0, 280, 5, 150, 151, 20}) {
    EXPECT_EQ(settled(*feed, index * 0.04), sightings[static_cast<std::size_t>(index)]);
  }
}

TEST_F(PictureFeedTest, aRequestAheadIsReachedByDecodingOn) {
  const auto feed = feedOf(make(largeMovie(100)));
  for (int index = 0; index < 100; index += 7) {
    feed->seek(index * 0.04);
    ASSERT_NEAR(feed->waitForPictureAt(index * 0.04)->pts, index * 0.04, 1e-9);
  }
  EXPECT_LE(feed->decodedPictures(), 100);
}

TEST_F(PictureFeedTest, aRequestFarAheadIsReachedFromItsKeyFrame) {
  const auto feed = feedOf(make({.ticks = evenTicks(400, 40), .keyFrameInterval = 20}));
  ASSERT_NEAR(feed->waitForPictureAt(15.9)->pts, 15.88, 1e-9);
  EXPECT_LT(feed->decodedPictures(), 60);
}

TEST_F(PictureFeedTest, aSlowDragBackwardsIsExactAndDecodesLittle) {
  const int pictures = 150;
  const auto feed = feedOf(make(largeMovie(pictures)));
  const auto sightings = sightingsIn(file_);
  for (int index = pictures - 1; index >= 0; --index) {
    feed->seek(index * 0.04 + 0.02);
    feed->seek(index * 0.04);
    const auto picture = feed->waitForPictureAt(index * 0.04);
    ASSERT_TRUE(picture);
    ASSERT_EQ(picture->pts, sightings[static_cast<std::size_t>(index)].pts);
    if (index % 10 == 0) {
      ASSERT_EQ(sightingOf(*picture), sightings[static_cast<std::size_t>(index)]);
    }
  }
  EXPECT_LT(feed->decodedPictures(), 6 * pictures) << "decoding from the key frame: 75 times";
}

TEST_F(PictureFeedTest, theSampleIsDraggedBackwardsWithFewDecodes) {
  const std::filesystem::path file = VESK_SAMPLE_TAKE "/screen.mov";
  const auto sightings = sightingsIn(file);
  const auto feed = feedOf(file);
  for (auto at = sightings.rbegin(); at != sightings.rend(); ++at) {
    ASSERT_EQ(feed->waitForPictureAt(at->pts)->pts, at->pts);
  }
  EXPECT_LT(feed->decodedPictures(), static_cast<std::int64_t>(6 * sightings.size()));
}

TEST_F(PictureFeedTest, aSingleSeekDoesNotFlashThroughThePicturesOnTheWay) {
  const auto feed = feedOf(make(largeMovie(100)));
  const auto first = seen(feed->waitForPictureAt(0));
  const auto start = Clock::now();
  feed->seek(3.9);
  for (auto now = start; now - start < 50ms; now = Clock::now()) {
    const auto picture = seen(feed->pictureAt(3.9));
    if (feed->isExactAt(3.9)) break;
    // The machine may have paused between the two.
    ASSERT_TRUE(picture == first || Clock::now() - start > 50ms);
  }
}

TEST_F(PictureFeedTest, whileRequestsCannotBeMetNearerAndNearerPicturesStandIn) {
  const auto feed = feedOf(make(largeMovie(150)));
  (void)feed->waitForPictureAt(0);
  feed->seek(5.0);
  feed->seek(5.9);
  std::vector<double> shown;
  ASSERT_TRUE(eventually([&] {
    const double pts = feed->pictureAt(5.9)->pts;
    if (shown.empty() || shown.back() != pts) shown.push_back(pts);
    return feed->isExactAt(5.9);
  }));
  EXPECT_TRUE(std::ranges::is_sorted(shown));
  EXPECT_GT(shown.size(), 2U);
  EXPECT_NEAR(feed->pictureAt(5.9)->pts, 5.88, 1e-9);
}

TEST_F(PictureFeedTest, theLastPictureStandsForEver) {
  const auto feed = feedOf(make({.ticks = evenTicks(20, 40), .bFrames = 2}));
  const auto last = sightingsIn(file_).back();
  for (const double late : {last.pts, last.pts + 0.5, 86'400.0, 1e300, infinity}) {
    EXPECT_EQ(seen(feed->waitForPictureAt(late)), last) << late;
    EXPECT_TRUE(feed->isExactAt(late));
  }
}

TEST_F(PictureFeedTest, timesBeforeTheFirstPictureGiveIt) {
  const auto feed = feedOf(make({.ticks = evenTicks(20, 40, 2'000), .bFrames = 2}));
  const auto first = sightingsIn(file_).front();
  for (const double early : {1.9, 0.0, -1.0, -infinity}) {
    (void)feed->waitForPictureAt(2.5);
    EXPECT_EQ(seen(feed->waitForPictureAt(early)), first) << early;
  }
}

TEST_F(PictureFeedTest, notANumberCountsAsZero) {
  const auto feed = feedOf(make({.ticks = evenTicks(60, 40, -1'000)}));
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto atZero = seen(feed->waitForPictureAt(0));
  (void)feed->waitForPictureAt(1);
  feed->seek(nan);
  EXPECT_EQ(seen(feed->waitForPictureAt(nan)), atZero);
  EXPECT_EQ(seen(feed->pictureAt(nan)), atZero);
  EXPECT_TRUE(feed->isExactAt(nan));
}

TEST_F(PictureFeedTest, anIdleFeedRests) {
  const auto feed = feedOf(make({.ticks = evenTicks(200, 40)}));
  (void)feed->waitForPictureAt(2);
  std::int64_t decoded = -1;
  ASSERT_TRUE(eventually([&] {
    std::this_thread::sleep_for(50ms);
    return std::exchange(decoded, feed->decodedPictures()) == feed->decodedPictures();
  }));
  const std::clock_t start = std::clock();
  std::this_thread::sleep_for(300ms);
  EXPECT_LT(static_cast<double>(std::clock() - start) / CLOCKS_PER_SEC, 0.03);
  EXPECT_EQ(feed->decodedPictures(), decoded);
}

TEST_F(PictureFeedTest, onlyAFewPicturesAreDecodedAhead) {
  const auto feed = feedOf(make({.ticks = evenTicks(200, 40)}));
  (void)feed->waitForPictureAt(0);
  std::this_thread::sleep_for(200ms);
  EXPECT_LE(feed->decodedPictures(), 12);
}

TEST_F(PictureFeedTest, aPictureSeenAgainIsTheSamePicture) {
  const auto feed = feedOf(make({.ticks = evenTicks(60, 40)}));
  const auto once = feed->waitForPictureAt(1);
  (void)feed->waitForPictureAt(2);
  const auto again = feed->waitForPictureAt(1.01);
  ASSERT_TRUE(once && again);
  EXPECT_TRUE(once->isSamePictureAs(*again));
}

TEST_F(PictureFeedTest, ofACutMovieTheLastReadablePictureStands) {
  make({.ticks = evenTicks(200, 20), .bFrames = 2, .movFlags = "+faststart"});
  const std::string bytes = bytesOf(file_);
  writeBytes(file_, std::string_view(bytes).substr(0, bytes.size() / 2));
  const auto sightings = sightingsIn(file_);
  const auto feed = feedOf(file_);
  EXPECT_EQ(seen(feed->waitForPictureAt(3.9)), sightings.back());
  EXPECT_EQ(seen(feed->waitForPictureAt(0.5)), sightings[indexAt(sightings, 0.5)]);
  EXPECT_EQ(seen(feed->waitForPictureAt(3.5)), sightings.back());
}

TEST_F(PictureFeedTest, aDamagedGroupIsBridgedByThePictureBeforeIt) {
  const auto destroyTheThirdGroup = [](int index, std::span<std::uint8_t> packet) {
    if (index >= 20 && index < 30) std::ranges::fill(packet, std::uint8_t{0xff});
  };
  const auto feed = feedOf(
      make({.ticks = evenTicks(60, 40), .keyFrameInterval = 10, .damage = destroyTheThirdGroup}));
  const auto sightings = sightingsIn(file_);
  EXPECT_EQ(seen(feed->waitForPictureAt(1.1)), sightings[19]);
  EXPECT_NEAR(feed->waitForPictureAt(1.23)->pts, 1.2, 1e-9);
  EXPECT_EQ(seen(feed->waitForPictureAt(0.9)), sightings[19]);
}

TEST_F(PictureFeedTest, aMovieOfWhichNothingDecodesGivesNothing) {
  const auto destroyAll = [](int, std::span<std::uint8_t> packet) {
    std::ranges::fill(packet, std::uint8_t{0xff});
  };
  const auto feed = feedOf(make({.ticks = evenTicks(40, 25), .damage = destroyAll}));
  EXPECT_EQ(feed->firstPTS(), 0);
  EXPECT_FALSE(feed->waitForPictureAt(0.5));
  EXPECT_TRUE(feed->isExactAt(0.5));
  EXPECT_FALSE(feed->pictureAt(0.6));
}

TEST_F(PictureFeedTest, aMovieWithoutASampleGivesNothing) {
  const auto feed = feedOf(make({.ticks = {}, .movFlags = "+frag_keyframe+empty_moov"}));
  EXPECT_EQ(feed->firstPTS(), 0);
  EXPECT_FALSE(feed->waitForPictureAt(0));
}

TEST_F(PictureFeedTest, aMissingFileIsNamed) {
  const auto feed = PictureFeed::open(file_);
  ASSERT_FALSE(feed);
  EXPECT_EQ(feed.error(), (MediaError{MediaError::Kind::openFailed, "找不到文件 “screen.mov”"}));
}

TEST_F(PictureFeedTest, flippedBytesNeverHang) {
  make({.width = 32, .height = 32, .ticks = evenTicks(24, 40), .bFrames = 1});
  const std::string bytes = bytesOf(file_);
  std::mt19937 random(20240609);
  for (int round = 0; round < 100; ++round) {
    std::string damaged = bytes;
    for (int flips = 0; flips < 6; ++flips) {
      damaged[random() % damaged.size()] = static_cast<char>(random());
    }
    writeBytes(file_, damaged);
    const auto feed = PictureFeed::open(file_);
    if (!feed) continue;
    for (const double time : {0.5, 0.1, 1e9, 0.4, 0.45, 0.4, -1.0}) {
      (void)(*feed)->waitForPictureAt(time);
      EXPECT_TRUE((*feed)->isExactAt(time));
    }
  }
}

TEST_F(PictureFeedTest, goesAwayAtOnceAmidALongDecode) {
  make(largeMovie(240));
  const auto start = Clock::now();
  (void)feedOf(file_)->waitForPictureAt(infinity);
  const auto decodingAll = Clock::now() - start;

  auto feed = feedOf(file_);
  feed->seek(infinity);
  (void)feed->pictureAt(0.04);
  feed->seek(infinity);
  std::this_thread::sleep_for(5ms);
  const auto end = Clock::now();
  feed.reset();
  EXPECT_LT(Clock::now() - end, decodingAll / 2);
}

}  // namespace
}  // namespace vesk::media
