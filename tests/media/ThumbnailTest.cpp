#include <gtest/gtest.h>
#include <sys/stat.h>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <filesystem>
#include <iterator>
#include <string>

#include "media/ColourMovie.h"
#include "media/JpegPicture.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"
#include "media/Thumbnail.h"

namespace vesk::media {
namespace {

namespace fs = std::filesystem;

constexpr int fewLevels = 6;
constexpr Quarters otherColours{testColours[3], testColours[2], testColours[1], testColours[0]};

class ThumbnailTest : public testing::Test {
 protected:
  ThumbnailTest() {
    fs::create_directory(package_);
    makeColourMovie(movie_, 320, 200);
  }

  std::ptrdiff_t filesInPackage() const {
    return std::distance(fs::directory_iterator(package_), fs::directory_iterator());
  }

  /// What stands in the place of the file is passed over, in little time, and then replaced.
  void expectMadeAnew() const {
    const auto start = std::chrono::steady_clock::now();
    const auto picture = thumbnail(package_);
    EXPECT_LT(std::chrono::steady_clock::now() - start, std::chrono::seconds(10));
    ASSERT_TRUE(picture);
    EXPECT_LE(difference(quartersOf(*picture), testColours), fewLevels);
    ASSERT_TRUE(fs::is_regular_file(fs::symlink_status(kept_)));
    EXPECT_TRUE(decodeJpeg(bytesOf(kept_)));
    fs::remove(kept_);
  }

  TemporaryFolder folder_;
  fs::path package_ = folder_ / "take.recording";
  fs::path movie_ = package_ / "screen.mov";
  fs::path kept_ = package_ / "thumb.jpg";
};

TEST_F(ThumbnailTest, isMadeFromTheMovieAndKept) {
  const auto made = thumbnail(package_);
  ASSERT_TRUE(made);
  EXPECT_LE(difference(quartersOf(*made), testColours), 4);
  const auto kept = decodeJpeg(bytesOf(kept_));
  ASSERT_TRUE(kept);
  EXPECT_EQ(kept->width, 320);
  EXPECT_EQ(kept->height, 200);
  EXPECT_LE(difference(quartersOf(*kept), testColours), fewLevels);
  EXPECT_EQ(filesInPackage(), 2);
}

TEST_F(ThumbnailTest, aSecondCallDoesNotTouchTheMovie) {
  ASSERT_TRUE(thumbnail(package_));
  makeColourMovie(movie_, 320, 200, otherColours);
  const auto second = thumbnail(package_);
  ASSERT_TRUE(second);
  EXPECT_LE(difference(quartersOf(*second), testColours), fewLevels);
  fs::remove(movie_);
  EXPECT_EQ(thumbnail(package_), second);
}

TEST_F(ThumbnailTest, aDeletedOneIsMadeAnew) {
  ASSERT_TRUE(thumbnail(package_));
  fs::remove(kept_);
  expectMadeAnew();
}

TEST_F(ThumbnailTest, withoutAMovieThereIsNone) {
  fs::remove(movie_);
  EXPECT_EQ(thumbnail(package_), std::nullopt);
  EXPECT_EQ(thumbnail(folder_ / "missing.recording"), std::nullopt);
  EXPECT_EQ(filesInPackage(), 0);
}

TEST_F(ThumbnailTest, aDamagedMovieGivesNoneAndLeavesNothing) {
  const auto whole = bytesOf(movie_);
  for (const auto& damaged : {std::string("no movie"), std::string(), whole.substr(0, 100),
                              whole.substr(0, whole.find("mdat") + 50)}) {
    writeBytes(movie_, damaged);
    EXPECT_EQ(thumbnail(package_), std::nullopt);
    EXPECT_EQ(filesInPackage(), 1);
  }
}

TEST_F(ThumbnailTest, whatIsNoPictureIsPassedOver) {
  for (const auto& bytes : {std::string(), std::string("text"), std::string(1000, '\xFF')}) {
    writeBytes(kept_, bytes);
    expectMadeAnew();
  }
}

TEST_F(ThumbnailTest, aCutOneIsPassedOver) {
  ASSERT_TRUE(thumbnail(package_));
  fs::resize_file(kept_, fs::file_size(kept_) - 100);
  expectMadeAnew();
}

TEST_F(ThumbnailTest, aBombIsPassedOver) {
  ASSERT_TRUE(thumbnail(package_));
  auto bytes = bytesOf(kept_);
  const auto frameHeader = bytes.find("\xFF\xC0");
  ASSERT_NE(frameHeader, bytes.npos);
  constexpr char sixtyThousand[] = "\xEA\x60\xEA\x60";
  bytes.replace(frameHeader + 5, 4, sixtyThousand);
  writeBytes(kept_, bytes);
  expectMadeAnew();
}

TEST_F(ThumbnailTest, aHugeOneIsPassedOver) {
  ASSERT_TRUE(thumbnail(package_));
  fs::resize_file(kept_, std::uintmax_t{1} << 40);
  expectMadeAnew();
}

TEST_F(ThumbnailTest, aPipeOrADeviceInItsPlaceIsPassedOver) {
  ASSERT_EQ(::mkfifo(kept_.c_str(), 0600), 0);
  expectMadeAnew();
  fs::create_symlink("/dev/zero", kept_);
  expectMadeAnew();
}

TEST_F(ThumbnailTest, aLinkOutOfThePackageIsReplacedAndItsTargetKept) {
  makeColourMovie(folder_ / "other.mov", 64, 64, otherColours);
  const auto outside = folder_ / "outside.jpg";
  ASSERT_TRUE(thumbnail(package_));
  fs::rename(kept_, outside);
  const auto bytes = bytesOf(outside);
  fs::create_symlink(outside, kept_);
  expectMadeAnew();
  EXPECT_EQ(bytesOf(outside), bytes);
}

TEST_F(ThumbnailTest, thatCannotBeKeptIsGivenAllTheSame) {
  fs::create_directories(kept_ / "in the way");
  const auto picture = thumbnail(package_);
  ASSERT_TRUE(picture);
  EXPECT_LE(difference(quartersOf(*picture), testColours), fewLevels);
  EXPECT_TRUE(fs::is_directory(kept_));
  EXPECT_EQ(filesInPackage(), 2);
}

TEST_F(ThumbnailTest, whatIsNoMovieOfThePackageIsNotOpened) {
  fs::rename(movie_, folder_ / "outside.mov");
  fs::create_symlink(folder_ / "outside.mov", movie_);
  EXPECT_EQ(thumbnail(package_), std::nullopt);
  fs::remove(movie_);
  ASSERT_EQ(::mkfifo(movie_.c_str(), 0600), 0);
  EXPECT_EQ(thumbnail(package_), std::nullopt);
  fs::remove(movie_);
  fs::create_directory(movie_);
  EXPECT_EQ(thumbnail(package_), std::nullopt);
  EXPECT_EQ(filesInPackage(), 1);
}

TEST_F(ThumbnailTest, ofARealTakeFitsItsBox) {
  const auto copy = folder_ / "tour.recording";
  fs::copy(VESK_SAMPLE_TAKE, copy);
  fs::remove(copy / "thumb.jpg");
  const auto picture = thumbnail(copy);
  ASSERT_TRUE(picture);
  EXPECT_EQ(std::max(picture->width, picture->height), 640);
}

}  // namespace
}  // namespace vesk::media
