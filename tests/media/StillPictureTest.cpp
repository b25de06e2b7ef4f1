#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <cstdint>
#include <cstdlib>
#include <filesystem>
#include <span>

#include "media/ColourMovie.h"
#include "media/StillPicture.h"
#include "media/TemporaryFolder.h"
#include "media/TestMovie.h"

namespace vesk::media {
namespace {

constexpr PictureSize limit{640, 640};

class StillPictureTest : public testing::Test {
 protected:
  /// The number of the picture that is shown half a second into a movie of flat shades.
  int shownOf(const MovieRecipe& recipe) const {
    makeMovie(file_, recipe);
    const auto picture = stillPicture(file_, 0.5, limit);
    if (!picture) {
      return -1;
    }
    const int shade = picture->pixels.at(0);
    for (int index = 0; index < static_cast<int>(recipe.ticks.size()); ++index) {
      const int expected = (shadeOf(index) - 16) * 255 / 219;
      if (std::abs(shade - expected) <= 3) {
        return index;
      }
    }
    return -2;
  }

  TemporaryFolder folder_;
  std::filesystem::path file_ = folder_ / "screen.mov";
};

TEST_F(StillPictureTest, isTheLatestPictureUpToThatTime) {
  EXPECT_EQ(shownOf({.ticks = evenTicks(18, 40)}), 12);
  EXPECT_EQ(shownOf({.ticks = evenTicks(18, 100)}), 5);
  EXPECT_EQ(shownOf({.ticks = evenTicks(18, 40), .bFrames = 2}), 12);
  EXPECT_EQ(shownOf({.ticks = {0, 10'000, 20'000}}), 0);
}

TEST_F(StillPictureTest, ofAShortMovieIsItsLastPicture) {
  EXPECT_EQ(shownOf({.ticks = evenTicks(5, 40)}), 4);
  EXPECT_EQ(shownOf({.ticks = {0}}), 0);
}

TEST_F(StillPictureTest, ofAMovieThatStartsLaterIsItsFirstPicture) {
  EXPECT_EQ(shownOf({.ticks = evenTicks(5, 40, 2000)}), 0);
}

TEST_F(StillPictureTest, keepsTheColoursAndTheProportions) {
  makeColourMovie(file_, 1280, 720);
  const auto picture = stillPicture(file_, 0.5, limit);
  ASSERT_TRUE(picture) << picture.error().message;
  EXPECT_EQ(picture->width, 640);
  EXPECT_EQ(picture->height, 360);
  EXPECT_LE(difference(quartersOf(*picture), testColours), 4);
}

TEST_F(StillPictureTest, isNeverEnlarged) {
  makeColourMovie(file_, 128, 96);
  const auto picture = stillPicture(file_, 0.5, limit);
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->width, 128);
  EXPECT_EQ(picture->height, 96);
}

TEST_F(StillPictureTest, followsTheDisplayMatrixOfTheTrack) {
  makeColourMovie(file_, 192, 128);
  const auto [topLeft, topRight, bottomLeft, bottomRight] = testColours;
  struct Case {
    std::array<int, 4> matrix;
    PictureSize size;
    Quarters shown;
  };
  const std::array cases{
      Case{{1, 0, 0, 1}, {192, 128}, testColours},
      Case{{0, 1, -1, 0}, {128, 192}, {bottomLeft, topLeft, bottomRight, topRight}},
      Case{{-1, 0, 0, -1}, {192, 128}, {bottomRight, bottomLeft, topRight, topLeft}},
      Case{{0, -1, 1, 0}, {128, 192}, {topRight, bottomRight, topLeft, bottomLeft}},
      Case{{-1, 0, 0, 1}, {192, 128}, {topRight, topLeft, bottomRight, bottomLeft}},
      Case{{1, 0, 0, -1}, {192, 128}, {bottomLeft, bottomRight, topLeft, topRight}},
      Case{{0, 1, 1, 0}, {128, 192}, {topLeft, bottomLeft, topRight, bottomRight}},
  };
  for (const auto& [matrix, size, shown] : cases) {
    setDisplayMatrix(file_, matrix);
    const auto picture = stillPicture(file_, 0.5, limit);
    ASSERT_TRUE(picture);
    EXPECT_EQ((PictureSize{picture->width, picture->height}), size);
    EXPECT_LE(difference(quartersOf(*picture), shown), 4) << testing::PrintToString(matrix);
  }
}

TEST_F(StillPictureTest, aTurnedMovieFitsTheLimitAsItIsShown) {
  makeColourMovie(file_, 1280, 720);
  setDisplayMatrix(file_, {0, 1, -1, 0});
  const auto picture = stillPicture(file_, 0.5, {180, 640});
  ASSERT_TRUE(picture);
  EXPECT_EQ(picture->width, 180);
  EXPECT_EQ(picture->height, 320);
}

TEST_F(StillPictureTest, ofADamagedMovieFails) {
  makeMovie(file_, {.ticks = evenTicks(18, 40), .damage = [](int, std::span<std::uint8_t> bytes) {
                      std::ranges::fill(bytes, std::uint8_t{0x55});
                    }});
  EXPECT_FALSE(stillPicture(file_, 0.5, limit));

  makeMovie(file_, {.ticks = evenTicks(18, 40)});
  std::filesystem::resize_file(file_, std::filesystem::file_size(file_) / 3);
  EXPECT_FALSE(stillPicture(file_, 0.5, limit));

  writeBytes(file_, "no movie");
  EXPECT_FALSE(stillPicture(file_, 0.5, limit));
  EXPECT_FALSE(stillPicture(folder_ / "missing.mov", 0.5, limit));
}

TEST(FittedSize, keepsTheProportionsAndNeverGrows) {
  EXPECT_EQ(fittedSize({1920, 1080}, limit), (PictureSize{640, 360}));
  EXPECT_EQ(fittedSize({1080, 1920}, limit), (PictureSize{360, 640}));
  EXPECT_EQ(fittedSize({641, 640}, limit), (PictureSize{640, 639}));
  EXPECT_EQ(fittedSize({640, 640}, limit), limit);
  EXPECT_EQ(fittedSize({5, 7}, limit), (PictureSize{5, 7}));
  EXPECT_EQ(fittedSize({32'768, 2}, limit), (PictureSize{640, 1}));
}

}  // namespace
}  // namespace vesk::media
