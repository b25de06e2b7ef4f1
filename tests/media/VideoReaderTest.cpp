#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <cmath>
#include <random>
#include <utility>

#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/VideoReader.h"

namespace vesk::media {
namespace {

using Kind = MediaError::Kind;
using testing::DoubleNear;
using testing::Field;
using testing::HasSubstr;
using testing::Optional;
using testing::Pointwise;

/// Everything that a reader delivers.
struct Reading {
  std::vector<VideoFrame> frames;
  std::optional<MediaError> error;
};

Reading readAll(VideoReader& reader) {
  Reading reading;
  while (true) {
    auto next = reader.next();
    if (!next) {
      reading.error = next.error();
      return reading;
    }
    std::optional<VideoFrame>& frame = *next;
    if (!frame) {
      return reading;
    }
    reading.frames.push_back(std::move(*frame));
  }
}

Reading readAll(const std::filesystem::path& file) {
  auto reader = VideoReader::open(file);
  if (!reader) {
    return {{}, reader.error()};
  }
  return readAll(*reader);
}

std::vector<double> timesOf(const Reading& reading) {
  std::vector<double> times;
  times.reserve(reading.frames.size());
  for (const VideoFrame& frame : reading.frames) {
    times.push_back(frame.pts);
  }
  return times;
}

void expectShadesInOrder(const Reading& reading) {
  for (std::size_t i = 0; i < reading.frames.size(); ++i) {
    EXPECT_NEAR(meanLuma(reading.frames[i]), shadeOf(static_cast<int>(i)), 2) << "picture " << i;
  }
}

class VideoReaderTest : public testing::Test {
 protected:
  std::filesystem::path make(const MovieRecipe& recipe) {
    makeMovie(file_, recipe);
    return file_;
  }
  /// The same movie, cut to a share of its bytes.
  std::filesystem::path makeCut(const MovieRecipe& recipe, double share) {
    const std::string bytes = bytesOf(make(recipe));
    writeBytes(file_, std::string_view(bytes).substr(
                          0, static_cast<std::size_t>(static_cast<double>(bytes.size()) * share)));
    return file_;
  }

  TemporaryFolder folder_;
  std::filesystem::path file_ = folder_ / "screen.mov";
};

TEST_F(VideoReaderTest, picturesComeInOrderOfPresentationDespiteBFrames) {
  const Reading reading = readAll(make({.ticks = evenTicks(30, 20), .bFrames = 3}));
  EXPECT_FALSE(reading.error);
  ASSERT_EQ(reading.frames.size(), 30U);
  expectShadesInOrder(reading);
  EXPECT_TRUE(std::ranges::is_sorted(timesOf(reading)));
}

TEST_F(VideoReaderTest, unevenStampsArriveExactly) {
  const Reading reading = readAll(make({.ticks = {0, 17, 33, 700, 717, 2500, 2501}}));
  EXPECT_FALSE(reading.error);
  EXPECT_THAT(timesOf(reading),
              Pointwise(DoubleNear(1e-9), {0.0, 0.017, 0.033, 0.7, 0.717, 2.5, 2.501}));
  expectShadesInOrder(reading);
}

TEST_F(VideoReaderTest, aFirstStampOtherThanZeroIsKept) {
  const Reading reading = readAll(make({.ticks = evenTicks(5, 100, 100'000)}));
  EXPECT_FALSE(reading.error);
  EXPECT_THAT(timesOf(reading), Pointwise(DoubleNear(1e-9), {100.0, 100.1, 100.2, 100.3, 100.4}));
}

TEST_F(VideoReaderTest, fragmentedFilesAreRead) {
  const Reading reading = readAll(
      make({.ticks = evenTicks(40, 25), .bFrames = 2, .movFlags = "+frag_keyframe+empty_moov"}));
  EXPECT_FALSE(reading.error);
  ASSERT_EQ(reading.frames.size(), 40U);
  expectShadesInOrder(reading);
}

TEST_F(VideoReaderTest, hevcIsRead) {
  const Reading reading =
      readAll(make({.encoder = "libx265", .ticks = evenTicks(12, 40), .bFrames = 2}));
  EXPECT_FALSE(reading.error);
  ASSERT_EQ(reading.frames.size(), 12U);
  EXPECT_EQ(reading.frames[0].layout, PixelLayout::yuv420p8);
  expectShadesInOrder(reading);
}

TEST_F(VideoReaderTest, hevcOfTenBitsKeepsThem) {
  const Reading reading = readAll(
      make({.encoder = "libx265", .pixelFormat = "yuv420p10le", .ticks = evenTicks(6, 40)}));
  EXPECT_FALSE(reading.error);
  ASSERT_EQ(reading.frames.size(), 6U);
  EXPECT_EQ(reading.frames[0].layout, PixelLayout::yuv420p10);
  expectShadesInOrder(reading);
}

TEST_F(VideoReaderTest, h264OfTenBitsKeepsThem) {
  const Reading reading = readAll(make({.pixelFormat = "yuv420p10le", .ticks = evenTicks(6, 40)}));
  EXPECT_FALSE(reading.error);
  ASSERT_EQ(reading.frames.size(), 6U);
  EXPECT_EQ(reading.frames[0].layout, PixelLayout::yuv420p10);
  expectShadesInOrder(reading);
}

TEST_F(VideoReaderTest, fullResolutionChromaKeepsItsPlanes) {
  const Reading reading = readAll(make({.pixelFormat = "yuv444p", .ticks = evenTicks(3, 40)}));
  EXPECT_FALSE(reading.error);
  ASSERT_EQ(reading.frames.size(), 3U);
  const VideoFrame& frame = reading.frames[0];
  EXPECT_EQ(frame.layout, PixelLayout::yuv444p8);
  EXPECT_EQ(frame.planes[1].width, 128);
  EXPECT_EQ(frame.planes[2].height, 72);
}

TEST_F(VideoReaderTest, otherPixelFormatsAreConverted) {
  const Reading reading =
      readAll(make({.encoder = "rawvideo", .pixelFormat = "uyvy422", .ticks = evenTicks(2, 40)}));
  EXPECT_FALSE(reading.error);
  ASSERT_EQ(reading.frames.size(), 2U);
  EXPECT_EQ(reading.frames[0].layout, PixelLayout::yuv420p8);
  EXPECT_EQ(reading.frames[0].planes[1].width, 64);
}

TEST_F(VideoReaderTest, greyIsConvertedAtTheSameBrightness) {
  const Reading reading = readAll(make({.pixelFormat = "gray", .ticks = evenTicks(3, 40)}));
  EXPECT_FALSE(reading.error);
  ASSERT_EQ(reading.frames.size(), 3U);
  EXPECT_EQ(reading.frames[0].layout, PixelLayout::yuv420p8);
  expectShadesInOrder(reading);
}

TEST_F(VideoReaderTest, planesHaveTheSizesOfTheLayout) {
  const Reading reading = readAll(make({.width = 66, .height = 50, .ticks = {0}}));
  ASSERT_EQ(reading.frames.size(), 1U);
  const VideoFrame& frame = reading.frames[0];
  EXPECT_EQ(frame.width, 66);
  EXPECT_EQ(frame.height, 50);
  EXPECT_EQ(frame.planes[0].width, 66);
  EXPECT_EQ(frame.planes[1].width, 33);
  EXPECT_EQ(frame.planes[2].height, 25);
  EXPECT_GE(frame.planes[0].stride, 66);
}

TEST_F(VideoReaderTest, untaggedMoviesCountAsBt709LimitedLeftSited) {
  const Reading reading = readAll(make({.ticks = {0}}));
  ASSERT_EQ(reading.frames.size(), 1U);
  EXPECT_EQ(reading.frames[0].matrix, ColorMatrix::bt709);
  EXPECT_EQ(reading.frames[0].range, ColorRange::limited);
  EXPECT_EQ(reading.frames[0].siting, ChromaSiting::left);
}

TEST_F(VideoReaderTest, colourTagsAreReported) {
  const Reading old =
      readAll(make({.ticks = {0}, .matrix = ColorMatrix::bt601, .range = ColorRange::full}));
  ASSERT_EQ(old.frames.size(), 1U);
  EXPECT_EQ(old.frames[0].matrix, ColorMatrix::bt601);
  EXPECT_EQ(old.frames[0].range, ColorRange::full);

  const Reading wide = readAll(make({.encoder = "libx265",
                                     .pixelFormat = "yuv420p10le",
                                     .ticks = {0},
                                     .matrix = ColorMatrix::bt2020,
                                     .range = ColorRange::limited}));
  ASSERT_EQ(wide.frames.size(), 1U);
  EXPECT_EQ(wide.frames[0].matrix, ColorMatrix::bt2020);
  EXPECT_EQ(wide.frames[0].range, ColorRange::limited);
}

TEST_F(VideoReaderTest, theMovieIsDescribed) {
  auto reader = VideoReader::open(make({.ticks = evenTicks(50, 20)}));
  ASSERT_TRUE(reader) << reader.error().message;
  EXPECT_EQ(reader->info().width, 128);
  EXPECT_EQ(reader->info().height, 72);
  EXPECT_NEAR(reader->info().frameRate, 50, 0.5);
  EXPECT_NEAR(reader->info().duration, 1.0, 0.03);
  EXPECT_FALSE(reader->info().truncated);
}

TEST_F(VideoReaderTest, soundBetweenThePicturesIsPassedOver) {
  const Reading reading = readAll(make({.ticks = evenTicks(40, 50), .withSound = true}));
  EXPECT_FALSE(reading.error);
  ASSERT_EQ(reading.frames.size(), 40U);
  expectShadesInOrder(reading);
}

TEST_F(VideoReaderTest, copiesOfAPictureAreTheSamePictureAndOthersAreNot) {
  const Reading reading = readAll(make({.ticks = evenTicks(2, 40)}));
  ASSERT_EQ(reading.frames.size(), 2U);
  const VideoFrame copy = reading.frames[0];
  EXPECT_TRUE(copy.isSamePictureAs(reading.frames[0]));
  EXPECT_FALSE(copy.isSamePictureAs(reading.frames[1]));
  EXPECT_FALSE(VideoFrame{}.isSamePictureAs(VideoFrame{}));
}

TEST_F(VideoReaderTest, picturesOutliveTheReader) {
  const Reading reading = readAll(make({.ticks = evenTicks(30, 20)}));
  ASSERT_EQ(reading.frames.size(), 30U);
  std::filesystem::remove(file_);
  expectShadesInOrder(reading);
}

TEST_F(VideoReaderTest, theEndRepeatsWhenAskedAgain) {
  auto reader = VideoReader::open(make({.ticks = evenTicks(3, 40)}));
  ASSERT_TRUE(reader);
  EXPECT_EQ(readAll(*reader).frames.size(), 3U);
  const auto again = reader->next();
  ASSERT_TRUE(again);
  EXPECT_FALSE(*again);
}

TEST_F(VideoReaderTest, aChangeOfSizeIsBroughtBackToTheFirstSize) {
  const Reading reading = readAll(make({.ticks = evenTicks(16, 40), .smallerFrom = 8}));
  EXPECT_FALSE(reading.error);
  ASSERT_EQ(reading.frames.size(), 16U);
  for (const VideoFrame& frame : reading.frames) {
    EXPECT_EQ(frame.width, 128);
    EXPECT_EQ(frame.height, 72);
  }
  expectShadesInOrder(reading);
}

TEST_F(VideoReaderTest, aDamagedPacketCostsOnlyThePicturesThatNeedIt) {
  const auto destroyTheSixth = [](int index, std::span<std::uint8_t> packet) {
    if (index == 5) {
      std::ranges::fill(packet, std::uint8_t{0xff});
    }
  };
  const Reading reading = readAll(
      make({.ticks = evenTicks(40, 25), .keyFrameInterval = 10, .damage = destroyTheSixth}));
  EXPECT_FALSE(reading.error);
  EXPECT_GE(reading.frames.size(), 35U);
  EXPECT_LT(reading.frames.size(), 40U);
  EXPECT_NEAR(meanLuma(reading.frames.back()), shadeOf(39), 2);
  EXPECT_TRUE(std::ranges::is_sorted(timesOf(reading)));
}

TEST_F(VideoReaderTest, aMovieOfWhichNothingDecodesFails) {
  const auto destroyAll = [](int, std::span<std::uint8_t> packet) {
    std::ranges::fill(packet, std::uint8_t{0xff});
  };
  const Reading reading = readAll(make({.ticks = evenTicks(10, 25), .damage = destroyAll}));
  EXPECT_TRUE(reading.frames.empty());
  EXPECT_THAT(reading.error,
              Optional(MediaError{Kind::decodeFailed, "“screen.mov” 不完整或已损坏"}));
}

TEST_F(VideoReaderTest, aMissingFileIsNamed) {
  const auto reader = VideoReader::open(file_);
  ASSERT_FALSE(reader);
  EXPECT_EQ(reader.error(), (MediaError{Kind::openFailed, "找不到文件 “screen.mov”"}));
}

TEST_F(VideoReaderTest, anEmptyFileIsCalledEmpty) {
  writeBytes(file_, "");
  const auto reader = VideoReader::open(file_);
  ASSERT_FALSE(reader);
  EXPECT_EQ(reader.error(), (MediaError{Kind::openFailed, "“screen.mov” 是空文件"}));
}

TEST_F(VideoReaderTest, garbageIsCalledDamaged) {
  std::mt19937 random(7);
  std::string garbage(100'000, '\0');
  std::ranges::generate(garbage, [&] { return static_cast<char>(random()); });
  writeBytes(file_, garbage);
  const auto reader = VideoReader::open(file_);
  ASSERT_FALSE(reader);
  EXPECT_EQ(reader.error(), (MediaError{Kind::openFailed, "“screen.mov” 不完整或已损坏"}));
}

TEST_F(VideoReaderTest, folderAndPipeAreRefusedWithoutWaiting) {
  std::filesystem::create_directory(folder_ / "folder.mov");
  ASSERT_EQ(::mkfifo((folder_ / "pipe.mov").c_str(), 0600), 0);
  for (const char* name : {"folder.mov", "pipe.mov"}) {
    const auto reader = VideoReader::open(folder_ / name);
    ASSERT_FALSE(reader);
    EXPECT_EQ(reader.error().kind, Kind::openFailed);
    EXPECT_THAT(reader.error().message, HasSubstr("不是普通文件"));
  }
}

TEST_F(VideoReaderTest, aNameThatLooksLikeAProtocolIsAName) {
  const auto file = folder_ / "concat:a|b.mov";
  makeMovie(folder_ / "plain.mov", {.ticks = {0}});
  std::filesystem::rename(folder_ / "plain.mov", file);
  EXPECT_EQ(readAll(file).frames.size(), 1U);
}

TEST_F(VideoReaderTest, aMovieWithoutPictureTrackIsToldApart) {
  makeMovie(file_, {.encoder = "rawvideo",
                    .pixelFormat = "yuv420p",
                    .width = 16,
                    .height = 16,
                    .ticks = {0},
                    .withSound = true});
  // Renaming the handler makes the picture track one of an unknown kind.
  std::string bytes = bytesOf(file_);
  const auto handler = bytes.find("vide");
  ASSERT_NE(handler, std::string::npos);
  bytes.replace(handler, 4, "zzzz");
  writeBytes(file_, bytes);
  const auto reader = VideoReader::open(file_);
  ASSERT_FALSE(reader);
  EXPECT_EQ(reader.error().kind, Kind::noVideoTrack);
}

TEST_F(VideoReaderTest, aFileCutBeforeItsIndexDoesNotOpen) {
  const auto reader = VideoReader::open(makeCut({.ticks = evenTicks(30, 20)}, 0.5));
  ASSERT_FALSE(reader);
  EXPECT_EQ(reader.error(), (MediaError{Kind::openFailed, "“screen.mov” 不完整或已损坏"}));
}

TEST_F(VideoReaderTest, aFileCutAfterItsIndexGivesWhatItHasAndThenFails) {
  const MovieRecipe recipe{.ticks = evenTicks(60, 20), .movFlags = "+faststart"};
  auto reader = VideoReader::open(makeCut(recipe, 0.7));
  ASSERT_TRUE(reader) << reader.error().message;
  EXPECT_TRUE(reader->info().truncated);
  const Reading reading = readAll(*reader);
  EXPECT_GT(reading.frames.size(), 5U);
  EXPECT_LT(reading.frames.size(), 60U);
  expectShadesInOrder(reading);
  const MediaError cutShort{Kind::decodeFailed, "“screen.mov” 不完整或已损坏"};
  EXPECT_THAT(reading.error, Optional(cutShort));
  EXPECT_EQ(reader->next().error(), cutShort);
}

TEST_F(VideoReaderTest, aFragmentedFileCutAnywhereGivesWhatItHasAndThenFails) {
  const MovieRecipe recipe{.ticks = evenTicks(60, 20), .movFlags = "+frag_keyframe+empty_moov"};
  for (const double share : {0.5, 0.62, 0.75, 0.9}) {
    const Reading reading = readAll(makeCut(recipe, share));
    EXPECT_GT(reading.frames.size(), 5U) << share;
    EXPECT_LT(reading.frames.size(), 60U) << share;
    EXPECT_THAT(reading.error, Optional(Field(&MediaError::kind, Kind::decodeFailed))) << share;
  }
}

TEST_F(VideoReaderTest, aMovieWithoutASampleEndsAtOnce) {
  const Reading reading = readAll(make({.ticks = {}, .movFlags = "+frag_keyframe+empty_moov"}));
  EXPECT_TRUE(reading.frames.empty());
  EXPECT_FALSE(reading.error);
}

TEST_F(VideoReaderTest, flippedBytesNeverDoMoreThanFail) {
  const std::string bytes =
      bytesOf(make({.width = 32, .height = 32, .ticks = evenTicks(8, 40), .bFrames = 1}));
  std::mt19937 random(20240607);
  for (int round = 0; round < 150; ++round) {
    std::string damaged = bytes;
    for (int flips = 0; flips < 6; ++flips) {
      damaged[random() % damaged.size()] = static_cast<char>(random());
    }
    writeBytes(file_, damaged);
    const Reading reading = readAll(file_);
    EXPECT_LE(reading.frames.size(), 64U);
    EXPECT_TRUE(std::ranges::is_sorted(timesOf(reading)));
    if (reading.error) {
      EXPECT_THAT(reading.error->message, HasSubstr("screen.mov"));
    }
  }
}

}  // namespace
}  // namespace vesk::media
