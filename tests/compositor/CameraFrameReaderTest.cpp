#include <gtest/gtest.h>

#include <fstream>
#include <vector>

#include "compositor/CameraFrameReader.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"

namespace vesk::compositor {
namespace {

media::VideoFrame frameAt(double pts) {
  media::VideoFrame frame;
  frame.pts = pts;
  return frame;
}

/// Gives pictures at these times and counts how often it is asked.
struct Source {
  std::vector<double> times;
  bool breaksOff = false;
  std::size_t asked = 0;

  CameraFrameReader::Next next() {
    return [this]() -> std::expected<std::optional<media::VideoFrame>, media::MediaError> {
      if (asked < times.size()) return frameAt(times[asked++]);
      ++asked;
      if (breaksOff) return std::unexpected(media::MediaError{});
      return std::nullopt;
    };
  }
};

double timeOf(const std::optional<media::VideoFrame>& frame) {
  return frame ? frame->pts : -1;
}

TEST(CameraFrameReader, givesTheFirstPictureAtOrAfterTheTime) {
  Source source{.times = {0, 0.1, 0.2, 0.3}};
  CameraFrameReader reader(source.next());
  EXPECT_EQ(timeOf(reader.frame(0)), 0);
  EXPECT_EQ(timeOf(reader.frame(0.05)), 0.1);
  EXPECT_EQ(timeOf(reader.frame(0.1)), 0.1);
  EXPECT_EQ(timeOf(reader.frame(0.11)), 0.2);
}

TEST(CameraFrameReader, passesOverPicturesThatNobodyAskedFor) {
  Source source{.times = {0, 0.1, 0.2, 0.3}};
  CameraFrameReader reader(source.next());
  EXPECT_EQ(timeOf(reader.frame(0.25)), 0.3);
}

TEST(CameraFrameReader, theSameTimeAgainReadsNothing) {
  Source source{.times = {0, 0.1, 0.2}};
  CameraFrameReader reader(source.next());
  EXPECT_EQ(timeOf(reader.frame(0.1)), 0.1);
  EXPECT_EQ(source.asked, 2U);
  EXPECT_EQ(timeOf(reader.frame(0.1)), 0.1);
  EXPECT_EQ(timeOf(reader.frame(0.02)), 0.1) << "it never goes back";
  EXPECT_EQ(source.asked, 2U);
}

TEST(CameraFrameReader, afterTheEndTheLastPictureStandsAndNothingIsRead) {
  Source source{.times = {0, 0.1}};
  CameraFrameReader reader(source.next());
  EXPECT_EQ(timeOf(reader.frame(5)), 0.1);
  EXPECT_EQ(source.asked, 3U);
  EXPECT_EQ(timeOf(reader.frame(6)), 0.1);
  EXPECT_EQ(source.asked, 3U);
}

TEST(CameraFrameReader, aFileThatBreaksOffKeepsItsLastPicture) {
  Source source{.times = {0, 0.1}, .breaksOff = true};
  CameraFrameReader reader(source.next());
  EXPECT_EQ(timeOf(reader.frame(5)), 0.1);
  EXPECT_EQ(timeOf(reader.frame(6)), 0.1);
  EXPECT_EQ(source.asked, 3U);
}

TEST(CameraFrameReader, aFileWithoutPicturesGivesNothingForEver) {
  Source source;
  CameraFrameReader reader(source.next());
  EXPECT_FALSE(reader.frame(0));
  EXPECT_FALSE(reader.frame(1));
  EXPECT_EQ(source.asked, 1U);
}

TEST(CameraFrameReader, readsTheFileInOnePass) {
  const media::TemporaryFolder folder;
  media::makeMovie(folder / "camera.mov",
                   {.ticksPerSecond = 30, .ticks = media::evenTicks(20, 1), .bFrames = 2});
  CameraFrameReader reader(folder / "camera.mov");
  for (int index = 0; index < 20; ++index) {
    const auto& frame = reader.frame(index / 30.0 - 0.001);
    ASSERT_TRUE(frame) << index;
    EXPECT_NEAR(frame->pts, index / 30.0, 1e-9);
    EXPECT_NEAR(media::meanLuma(*frame), media::shadeOf(index), 2);
  }
}

TEST(CameraFrameReader, aFileThatCannotBeOpenedHasNoPictures) {
  const media::TemporaryFolder folder;
  std::ofstream(folder / "camera.mov") << "no movie";
  EXPECT_FALSE(CameraFrameReader(folder / "camera.mov").frame(1));
  EXPECT_FALSE(CameraFrameReader(folder / "absent.mov").frame(1));
}

}  // namespace
}  // namespace vesk::compositor
