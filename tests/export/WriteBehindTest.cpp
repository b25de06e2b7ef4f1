#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <memory>
#include <random>
#include <stdexcept>
#include <string>

#include "ProcessLimits.h"
#include "export/WriteBehind.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/VideoReader.h"

namespace vesk::exporting {
namespace {

using media::I420Picture;
using media::MediaError;
using testing::HasSubstr;
using Picture = std::shared_ptr<const I420Picture>;

constexpr int width = 320;
constexpr int height = 180;

Picture flatPicture(int luma) {
  auto picture = std::make_shared<I420Picture>(width, height);
  const auto& plane = picture->planes()[0];
  std::fill_n(plane.data, plane.stride * plane.height, static_cast<std::uint8_t>(luma));
  return picture;
}

/// Noise costs the encoder the most bits.
Picture noisyPicture(unsigned seed) {
  auto picture = std::make_shared<I420Picture>(width, height);
  std::mt19937 random(seed);
  std::generate_n(picture->planes()[0].data, picture->byteCount(),
                  [&] { return static_cast<std::uint8_t>(random()); });
  return picture;
}

class WriteBehindTest : public testing::Test {
 protected:
  media::VideoWriter open() {
    auto writer = media::VideoWriter::open(
        file_, {.width = width, .height = height, .fps = 30, .bitRate = 1'000'000});
    if (!writer) throw std::runtime_error(writer.error().message);
    return *std::move(writer);
  }

  media::TemporaryFolder folder_;
  std::filesystem::path file_ = folder_ / "movie.mp4";
};

TEST_F(WriteBehindTest, picturesAreStoredInOrderOnTheGrid) {
  WriteBehind movie(open());
  for (int index = 0; index < 20; ++index) ASSERT_TRUE(movie.write(flatPicture(40 + 8 * index)));
  ASSERT_TRUE(movie.finish());
  auto reader = media::VideoReader::open(file_);
  ASSERT_TRUE(reader) << reader.error().message;
  for (int index = 0; index < 20; ++index) {
    const auto picture = reader->next();
    ASSERT_TRUE(picture && picture->has_value()) << index;
    EXPECT_NEAR((*picture)->pts, index / 30.0, 1e-12);
    EXPECT_NEAR(media::meanLuma(**picture), 40 + 8 * index, 1.5);
  }
}

TEST_F(WriteBehindTest, aPictureMayComeAgain) {
  WriteBehind movie(open());
  const Picture still = flatPicture(100);
  for (int index = 0; index < 50; ++index) ASSERT_TRUE(movie.write(still));
  ASSERT_TRUE(movie.finish());
  EXPECT_EQ(media::inspect(file_).packets.size(), 50U);
  EXPECT_EQ(still.use_count(), 1);
}

TEST_F(WriteBehindTest, theBytesAreThoseOfWritingInStep) {
  WriteBehind movie(open());
  for (unsigned index = 0; index < 30; ++index) ASSERT_TRUE(movie.write(noisyPicture(index)));
  ASSERT_TRUE(movie.finish());
  const std::string bytes = media::bytesOf(file_);
  media::VideoWriter inStep = open();
  for (unsigned index = 0; index < 30; ++index) {
    ASSERT_TRUE(inStep.write(*noisyPicture(index), index));
  }
  ASSERT_TRUE(inStep.finish());
  EXPECT_EQ(media::bytesOf(file_), bytes);
}

TEST_F(WriteBehindTest, aMovieWithoutPicturesCanBeFinished) {
  WriteBehind movie(open());
  EXPECT_TRUE(movie.finish());
  EXPECT_TRUE(std::filesystem::exists(file_));
}

TEST_F(WriteBehindTest, aFailureStopsTheGiverAndComesOutAtTheEnd) {
  const test::FileSizeLimit limit(30'000);
  WriteBehind movie(open());
  unsigned index = 0;
  while (index < 1000 && movie.write(noisyPicture(index))) ++index;
  EXPECT_LT(index, 1000U) << "the failure never reached the giver";
  EXPECT_FALSE(movie.write(noisyPicture(index)));
  const auto finished = movie.finish();
  ASSERT_FALSE(finished);
  EXPECT_EQ(finished.error().kind, MediaError::Kind::diskFull);
  EXPECT_THAT(finished.error().message, HasSubstr("没有写完"));
  EXPECT_FALSE(std::filesystem::exists(file_));
}

TEST_F(WriteBehindTest, withoutFinishThePartialFileIsRemoved) {
  {
    WriteBehind movie(open());
    for (unsigned index = 0; index < 10; ++index) ASSERT_TRUE(movie.write(noisyPicture(index)));
    EXPECT_TRUE(std::filesystem::exists(file_));
  }
  EXPECT_FALSE(std::filesystem::exists(file_));
}

}  // namespace
}  // namespace vesk::exporting
