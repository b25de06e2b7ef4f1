#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "compositor/CursorImage.h"

namespace vesk::compositor {
namespace {

using package::CursorStyle;

class CursorImageTest : public ::testing::TestWithParam<CursorStyle> {
 protected:
  const CursorImage& image() const { return image_; }

  int channel(int x, int y, int index) const {
    return static_cast<int>(
        image_.pixels[static_cast<std::size_t>(y * image_.stride() + 4 * x + index)]);
  }
  int alpha(int x, int y) const { return channel(x, y, 3); }

 private:
  CursorImage image_ = drawCursorImage(GetParam()).value();
};

INSTANTIATE_TEST_SUITE_P(Styles, CursorImageTest, ::testing::ValuesIn(package::allCursorStyles));

TEST_P(CursorImageTest, hasFourPixelsAPoint) {
  const CursorGeometry geometry = cursorGeometry(GetParam());
  EXPECT_EQ(image().width, geometry.size.x * 4);
  EXPECT_EQ(image().height, geometry.size.y * 4);
  EXPECT_EQ(image().pixels.size(), static_cast<std::size_t>(image().width * image().height * 4));
}

TEST_P(CursorImageTest, isPremultiplied) {
  for (int y = 0; y < image().height; ++y) {
    for (int x = 0; x < image().width; ++x) {
      for (int index = 0; index < 3; ++index) {
        ASSERT_LE(channel(x, y, index), alpha(x, y)) << x << ", " << y;
      }
    }
  }
}

TEST_P(CursorImageTest, showsSomethingBrightAndSomethingDark) {
  // Visible on light and on dark content alike.
  int brightest = 0;
  int darkestOpaque = 255;
  for (int y = 0; y < image().height; ++y) {
    for (int x = 0; x < image().width; ++x) {
      brightest = std::max(brightest, channel(x, y, 1));
      if (alpha(x, y) > 60) darkestOpaque = std::min(darkestOpaque, channel(x, y, 1));
    }
  }
  EXPECT_GT(brightest, 220);
  EXPECT_LT(darkestOpaque, 60);
}

TEST_P(CursorImageTest, fadesOutBeforeTheEdgesOfTheBitmap) {
  // A shape that reached the edge would be cut off there: a shadow and a round line end may just
  // touch it.
  constexpr int faint = 70;
  for (int x = 0; x < image().width; ++x) {
    EXPECT_LE(alpha(x, 0), faint);
    EXPECT_LE(alpha(x, image().height - 1), faint);
  }
  for (int y = 0; y < image().height; ++y) {
    EXPECT_LE(alpha(0, y), faint);
    EXPECT_LE(alpha(image().width - 1, y), faint);
  }
}

TEST_P(CursorImageTest, hasSoftEdges) {
  std::set<int> levels;
  for (int y = 0; y < image().height; ++y) {
    for (int x = 0; x < image().width; ++x) levels.insert(alpha(x, y));
  }
  EXPECT_GT(levels.size(), 20U);
}

TEST_P(CursorImageTest, comesOutAlikeEachTime) {
  EXPECT_EQ(drawCursorImage(GetParam()).value(), image());
}

TEST(CursorGeometry, arrowsPointWithTheirTipAndTheOthersWithTheirCentre) {
  for (const CursorStyle style : {CursorStyle::arrow, CursorStyle::arrowDark}) {
    EXPECT_EQ(cursorGeometry(style), (CursorGeometry{.size = {20, 28}, .hotspot = {1.6, 1.68}}));
  }
  for (const CursorStyle style : {CursorStyle::dot, CursorStyle::ring, CursorStyle::crosshair}) {
    EXPECT_EQ(cursorGeometry(style), (CursorGeometry{.size = {26, 26}, .hotspot = {13, 13}}));
  }
}

TEST(CursorImage, allStylesDiffer) {
  std::set<std::vector<std::byte>> pictures;
  for (const CursorStyle style : package::allCursorStyles) {
    pictures.insert(drawCursorImage(style).value().pixels);
  }
  EXPECT_EQ(pictures.size(), package::allCursorStyles.size());
}

// A pixel in the middle of a point of the arrow's inside, left of its stem.
int greyInsideTheArrow(CursorStyle style) {
  const CursorImage image = drawCursorImage(style).value();
  return static_cast<int>(
      image.pixels[static_cast<std::size_t>(12 * 4 * image.stride() + 4 * 4 * 4)]);
}

TEST(CursorImage, arrowsAreFilledWhiteOrDark) {
  EXPECT_EQ(greyInsideTheArrow(CursorStyle::arrow), 255);
  EXPECT_NEAR(greyInsideTheArrow(CursorStyle::arrowDark), 0.11 * 255, 1);
}

TEST(CursorImage, aCrosshairLeavesItsMiddleFreeButForTheDot) {
  const CursorImage image = drawCursorImage(CursorStyle::crosshair).value();
  const auto alpha = [&](double x, double y) {
    const auto column = static_cast<std::ptrdiff_t>(x * 4);
    const auto row = static_cast<std::ptrdiff_t>(y * 4);
    return static_cast<int>(
        image.pixels[static_cast<std::size_t>(row * image.stride() + column * 4 + 3)]);
  };
  EXPECT_GT(alpha(13, 13), 240);  // the dot
  EXPECT_GT(alpha(20, 13), 240);  // an arm
  EXPECT_EQ(alpha(20, 20), 0);    // between the arms
}

}  // namespace
}  // namespace vesk::compositor
