#include <gtest/gtest.h>

#include <chrono>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string>
#include <string_view>
#include <thread>
#include <vector>

#include "media/ReadAhead.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"

namespace vesk::media {
namespace {

using namespace std::chrono_literals;

class ReadAheadTest : public testing::Test {
 protected:
  VideoReader open(const MovieRecipe& recipe) {
    makeMovie(file_, recipe);
    auto reader = VideoReader::open(file_);
    if (!reader) throw std::runtime_error(reader.error().message);
    return *std::move(reader);
  }

  TemporaryFolder folder_;
  std::filesystem::path file_ = folder_ / "screen.mov";
};

/// The stamps of all pictures up to the end or a failure.
std::vector<double> timesOf(ReadAhead& pictures) {
  std::vector<double> times;
  for (auto picture = pictures.next(); picture && picture->has_value(); picture = pictures.next()) {
    times.push_back((*picture)->pts);
  }
  return times;
}

TEST_F(ReadAheadTest, picturesComeWholeAndInOrder) {
  ReadAhead pictures(open({.ticks = evenTicks(30, 40), .bFrames = 2}));
  for (int index = 0; index < 30; ++index) {
    const auto picture = pictures.next();
    ASSERT_TRUE(picture && picture->has_value()) << index;
    EXPECT_NEAR((*picture)->pts, index * 0.04, 1e-9);
    EXPECT_NEAR(meanLuma(**picture), shadeOf(index), 2);
  }
}

TEST_F(ReadAheadTest, theEndRepeats) {
  ReadAhead pictures(open({.ticks = evenTicks(5, 40)}));
  EXPECT_EQ(timesOf(pictures).size(), 5U);
  for (int again = 0; again < 3; ++again) {
    const auto picture = pictures.next();
    ASSERT_TRUE(picture);
    EXPECT_FALSE(picture->has_value());
  }
}

TEST_F(ReadAheadTest, aFailureComesAfterThePicturesBeforeItAndRepeats) {
  makeMovie(file_, {.ticks = evenTicks(60, 20), .movFlags = "+faststart"});
  const std::string bytes = bytesOf(file_);
  writeBytes(file_, std::string_view(bytes).substr(0, bytes.size() * 7 / 10));
  auto reader = VideoReader::open(file_);
  ASSERT_TRUE(reader) << reader.error().message;
  ReadAhead pictures(*std::move(reader));
  const std::size_t count = timesOf(pictures).size();
  EXPECT_GT(count, 5U);
  EXPECT_LT(count, 60U);
  for (int again = 0; again < 3; ++again) {
    const auto picture = pictures.next();
    ASSERT_FALSE(picture);
    EXPECT_EQ(picture.error(),
              (MediaError{MediaError::Kind::decodeFailed, "“screen.mov” 不完整或已损坏"}));
  }
}

TEST_F(ReadAheadTest, mayBeDroppedBeforeTheEnd) {
  for (const int taken : {0, 1, 20}) {
    ReadAhead pictures(open({.ticks = evenTicks(100, 20)}));
    for (int index = 0; index < taken; ++index) ASSERT_TRUE(pictures.next());
    std::this_thread::sleep_for(5ms);
  }
}

TEST_F(ReadAheadTest, picturesOutliveTheirReader) {
  std::optional<VideoFrame> kept;
  {
    ReadAhead pictures(open({.ticks = evenTicks(3, 40)}));
    kept = pictures.next().value_or(std::nullopt);
  }
  ASSERT_TRUE(kept);
  EXPECT_NEAR(meanLuma(*kept), shadeOf(0), 2);
}

}  // namespace
}  // namespace vesk::media
