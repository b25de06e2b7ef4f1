#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <utility>

#include "ProcessLimits.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/VideoReader.h"
#include "media/VideoWriter.h"

namespace vesk::media {
namespace {

using Kind = MediaError::Kind;
using test::FileSizeLimit;
using test::WithoutPrivileges;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr int width = 320;
constexpr int height = 180;

VideoSettings settingsFor(Container container, int fps = 30) {
  return {
      .container = container, .width = width, .height = height, .fps = fps, .bitRate = 2'000'000};
}

/// A pattern that moves with the index, so that every picture costs bits.
I420Picture patternPicture(int index) {
  I420Picture picture(width, height);
  for (const auto& plane : picture.planes()) {
    for (int y = 0; y < plane.height; ++y) {
      for (int x = 0; x < plane.width; ++x) {
        plane.data[y * plane.stride + x] =
            static_cast<std::uint8_t>(40 + ((x + 7 * index) * (y + 3) >> 4) % 150);
      }
    }
  }
  return picture;
}

I420Picture flatPicture(int luma) {
  I420Picture picture(width, height);
  const auto& plane = picture.planes()[0];
  std::fill_n(plane.data, plane.stride * plane.height, static_cast<std::uint8_t>(luma));
  return picture;
}

std::expected<void, MediaError> writeMovie(const std::filesystem::path& file,
                                           const VideoSettings& settings, int frames) {
  auto writer = VideoWriter::open(file, settings);
  if (!writer) {
    return std::unexpected(writer.error());
  }
  for (int i = 0; i < frames; ++i) {
    if (auto written = writer->write(patternPicture(i), i); !written) {
      return written;
    }
  }
  return writer->finish();
}

class VideoWriterTest : public testing::TestWithParam<Container> {
 protected:
  TemporaryFolder folder_;
  std::filesystem::path file_ =
      folder_ / (GetParam() == Container::mp4 ? "movie.mp4" : "movie.mov");
};

INSTANTIATE_TEST_SUITE_P(Containers, VideoWriterTest,
                         testing::Values(Container::mp4, Container::mov), [](const auto& param) {
                           return param.param == Container::mp4 ? "mp4" : "mov";
                         });

TEST_P(VideoWriterTest, theStreamIsWhatTheContainerPromises) {
  ASSERT_TRUE(writeMovie(file_, settingsFor(GetParam()), 10));
  const StoredMovie movie = inspect(file_);
  constexpr int highProfile = 100;
  constexpr int hevcMainProfile = 1;
  const bool isMp4 = GetParam() == Container::mp4;
  EXPECT_EQ(movie.codec, isMp4 ? "h264" : "hevc");
  EXPECT_EQ(movie.profile, isMp4 ? highProfile : hevcMainProfile);
  EXPECT_EQ(movie.tag, isMp4 ? "avc1" : "hvc1");
  EXPECT_TRUE(movie.saysBt709);
  EXPECT_TRUE(movie.saysLimited);
  EXPECT_TRUE(movie.saysCentredChroma);
}

TEST_P(VideoWriterTest, theIndexLiesBeforeThePictures) {
  ASSERT_TRUE(writeMovie(file_, settingsFor(GetParam()), 10));
  const auto boxes = inspect(file_).boxes;
  const auto position = [&](const char* type) { return std::ranges::find(boxes, type); };
  ASSERT_NE(position("moov"), boxes.end());
  EXPECT_LT(position("moov"), position("mdat"));
}

TEST_P(VideoWriterTest, everyPictureIsStampedExactlyOnTheGrid) {
  for (const int fps : {24, 30, 60}) {
    ASSERT_TRUE(writeMovie(file_, settingsFor(GetParam(), fps), 50));
    const StoredMovie movie = inspect(file_);
    ASSERT_EQ(movie.packets.size(), 50U);
    for (int i = 0; i < 50; ++i) {
      const auto& packet = movie.packets[static_cast<std::size_t>(i)];
      EXPECT_NEAR(packet.pts, static_cast<double>(i) / fps, 1e-12);
      EXPECT_NEAR(packet.duration, 1.0 / fps, 1e-12);
    }
  }
}

TEST_P(VideoWriterTest, aKeyFrameComesEveryTwoSeconds) {
  auto writer = VideoWriter::open(file_, settingsFor(GetParam(), 10));
  ASSERT_TRUE(writer);
  const I420Picture still = flatPicture(90);
  for (int i = 0; i < 65; ++i) {
    ASSERT_TRUE(writer->write(still, i));
  }
  ASSERT_TRUE(writer->finish());
  std::vector<int> keyFrames;
  for (const auto& packet : inspect(file_).packets) {
    if (packet.isKey) {
      keyFrames.push_back(static_cast<int>(std::lround(packet.pts * 10)));
    }
  }
  EXPECT_THAT(keyFrames, ElementsAre(0, 20, 40, 60));
}

TEST_P(VideoWriterTest, theMeanRateIsNearTheOneAskedFor) {
  ASSERT_TRUE(writeMovie(file_, settingsFor(GetParam()), 240));
  EXPECT_NEAR(static_cast<double>(inspect(file_).bitRate), 2e6, 0.5e6);
}

TEST_P(VideoWriterTest, theSamePicturesGiveTheSameBytes) {
  const auto other = folder_ / "other";
  ASSERT_TRUE(writeMovie(file_, settingsFor(GetParam()), 45));
  ASSERT_TRUE(writeMovie(other, settingsFor(GetParam()), 45));
  EXPECT_EQ(bytesOf(file_), bytesOf(other));
}

TEST_P(VideoWriterTest, whatWasWrittenCanBeReadBack) {
  auto writer = VideoWriter::open(file_, settingsFor(GetParam()));
  ASSERT_TRUE(writer);
  for (int i = 0; i < 20; ++i) {
    ASSERT_TRUE(writer->write(flatPicture(40 + 8 * i), i));
  }
  ASSERT_TRUE(writer->finish());
  auto reader = VideoReader::open(file_);
  ASSERT_TRUE(reader) << reader.error().message;
  EXPECT_EQ(reader->info().width, width);
  EXPECT_NEAR(reader->info().frameRate, 30, 1e-9);
  for (int i = 0; i < 20; ++i) {
    const auto next = reader->next();
    ASSERT_TRUE(next && next->has_value()) << i;
    const VideoFrame frame = next->value_or(VideoFrame{});
    EXPECT_NEAR(frame.pts, i / 30.0, 1e-12);
    EXPECT_NEAR(meanLuma(frame), 40 + 8 * i, 1.5);
    EXPECT_EQ(frame.siting, ChromaSiting::centre);
  }
}

TEST_P(VideoWriterTest, aPictureMayBeChangedAsSoonAsItIsWritten) {
  const auto other = folder_ / "other";
  ASSERT_TRUE(writeMovie(other, settingsFor(GetParam()), 30));
  auto writer = VideoWriter::open(file_, settingsFor(GetParam()));
  ASSERT_TRUE(writer);
  I420Picture only(width, height);
  for (int i = 0; i < 30; ++i) {
    only.copyFrom(patternPicture(i));
    ASSERT_TRUE(writer->write(only, i));
  }
  ASSERT_TRUE(writer->finish());
  EXPECT_EQ(bytesOf(file_), bytesOf(other));
}

TEST_P(VideoWriterTest, cancellingRemovesTheFile) {
  auto writer = VideoWriter::open(file_, settingsFor(GetParam()));
  ASSERT_TRUE(writer);
  ASSERT_TRUE(writer->write(patternPicture(0), 0));
  EXPECT_TRUE(std::filesystem::exists(file_));
  writer->cancel();
  EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_P(VideoWriterTest, droppingAnUnfinishedWriterRemovesTheFile) {
  {
    auto writer = VideoWriter::open(file_, settingsFor(GetParam()));
    ASSERT_TRUE(writer);
    ASSERT_TRUE(writer->write(patternPicture(0), 0));
    const VideoWriter moved = std::move(*writer);
  }
  EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_P(VideoWriterTest, cancellingAFinishedMovieLeavesIt) {
  auto writer = VideoWriter::open(file_, settingsFor(GetParam()));
  ASSERT_TRUE(writer);
  ASSERT_TRUE(writer->write(patternPicture(0), 0));
  ASSERT_TRUE(writer->finish());
  writer->cancel();
  EXPECT_EQ(inspect(file_).packets.size(), 1U);
}

TEST_P(VideoWriterTest, runningOutOfSpaceFailsAtEveryPointAndLeavesNothing) {
  ASSERT_TRUE(writeMovie(file_, settingsFor(GetParam()), 90));
  const auto fullSize = static_cast<double>(std::filesystem::file_size(file_));
  // The last two limits are met only while the index is moved to the front.
  for (const double share : {0.0, 0.2, 0.6, 0.9, 0.995, 0.9999}) {
    std::expected<void, MediaError> outcome;
    {
      const FileSizeLimit limit(static_cast<rlim_t>(fullSize * share));
      outcome = writeMovie(file_, settingsFor(GetParam()), 90);
    }
    ASSERT_FALSE(outcome) << share;
    EXPECT_EQ(outcome.error().kind, Kind::diskFull) << share << outcome.error().message;
    EXPECT_THAT(outcome.error().message, HasSubstr("没有写完"));
    EXPECT_FALSE(std::filesystem::exists(file_)) << share;
  }
}

TEST_P(VideoWriterTest, aMissingFolderIsNamed) {
  const auto writer = VideoWriter::open(folder_ / "nowhere" / "movie.mp4", settingsFor(GetParam()));
  ASSERT_FALSE(writer);
  EXPECT_EQ(writer.error().kind, Kind::writeFailed);
  EXPECT_EQ(writer.error().message, "输出文件夹 “" + (folder_ / "nowhere").string() + "” 不存在");
}

TEST_P(VideoWriterTest, aFileInPlaceOfTheFolderIsNamed) {
  writeBytes(folder_ / "file", "x");
  const auto writer = VideoWriter::open(folder_ / "file" / "movie.mp4", settingsFor(GetParam()));
  ASSERT_FALSE(writer);
  EXPECT_EQ(writer.error().kind, Kind::writeFailed);
  EXPECT_THAT(writer.error().message, HasSubstr("不是文件夹"));
}

TEST_P(VideoWriterTest, aClosedFolderIsNamed) {
  ASSERT_EQ(::chmod(folder_.path().c_str(), 0555), 0);
  std::expected<void, MediaError> outcome;
  {
    const WithoutPrivileges unprivileged;
    outcome = writeMovie(file_, settingsFor(GetParam()), 1);
  }
  ASSERT_EQ(::chmod(folder_.path().c_str(), 0755), 0);
  ASSERT_FALSE(outcome);
  EXPECT_EQ(outcome.error().kind, Kind::writeFailed);
  EXPECT_EQ(outcome.error().message, "没有权限写入输出文件夹 “" + folder_.path().string() + "”");
}

TEST_P(VideoWriterTest, foldersAndPipesAreRefusedAndStay) {
  std::filesystem::create_directory(folder_ / "folder");
  ASSERT_EQ(::mkfifo((folder_ / "pipe").c_str(), 0600), 0);
  for (const char* name : {"folder", "pipe"}) {
    const auto writer = VideoWriter::open(folder_ / name, settingsFor(GetParam()));
    ASSERT_FALSE(writer);
    EXPECT_EQ(writer.error().kind, Kind::writeFailed);
    EXPECT_TRUE(std::filesystem::exists(folder_ / name));
  }
}

TEST_P(VideoWriterTest, impossibleSizesAreRefusedBeforeTheFileIsTouched) {
  writeBytes(file_, "an older movie");
  for (const auto& [impossibleWidth, impossibleHeight] :
       {std::pair{0, 0}, {1920, 0}, {321, 180}, {-2, 180}, {40'000, 2}}) {
    VideoSettings settings = settingsFor(GetParam());
    settings.width = impossibleWidth;
    settings.height = impossibleHeight;
    const auto writer = VideoWriter::open(file_, settings);
    ASSERT_FALSE(writer);
    EXPECT_EQ(writer.error().kind, Kind::unsupported);
  }
  EXPECT_EQ(bytesOf(file_), "an older movie");
}

TEST_P(VideoWriterTest, aMovieWithoutAPictureCanBeFinished) {
  ASSERT_TRUE(writeMovie(file_, settingsFor(GetParam()), 0));
  EXPECT_TRUE(std::filesystem::exists(file_));
}

}  // namespace
}  // namespace vesk::media
