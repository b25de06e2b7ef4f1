#include <gtest/gtest.h>

#include <cmath>
#include <limits>

#include "capture/Geometry.h"

namespace vesk::capture {
namespace {

using package::Rect;

constexpr Rect picture{.x = 100, .y = 200, .width = 1000, .height = 500};
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr double infinity = std::numeric_limits<double>::infinity();

TEST(Geometry, aPointIsNormalisedFromTheTopLeft) {
  EXPECT_EQ(normalised({.x = 100, .y = 200}, picture), (PicturePoint{.x = 0, .y = 0}));
  EXPECT_EQ(normalised({.x = 350, .y = 575}, picture), (PicturePoint{.x = 0.25, .y = 0.75}));
  EXPECT_EQ(normalised({.x = 1100, .y = 700}, picture), (PicturePoint{.x = 1, .y = 1}));
}

TEST(Geometry, aPointHalfAThousandthOutsideIsOnTheEdgeAndTwoThousandthsOutsideIsNowhere) {
  EXPECT_EQ(normalised({.x = 100 - 0.5, .y = 450}, picture), (PicturePoint{.x = 0, .y = 0.5}));
  EXPECT_EQ(normalised({.x = 1100 + 0.5, .y = 450}, picture), (PicturePoint{.x = 1, .y = 0.5}));
  EXPECT_EQ(normalised({.x = 600, .y = 200 - 0.25}, picture), (PicturePoint{.x = 0.5, .y = 0}));
  EXPECT_EQ(normalised({.x = 600, .y = 700 + 0.25}, picture), (PicturePoint{.x = 0.5, .y = 1}));
  EXPECT_EQ(normalised({.x = 100 - 2, .y = 450}, picture), std::nullopt);
  EXPECT_EQ(normalised({.x = 1100 + 2, .y = 450}, picture), std::nullopt);
  EXPECT_EQ(normalised({.x = 600, .y = 200 - 1}, picture), std::nullopt);
  EXPECT_EQ(normalised({.x = 600, .y = 700 + 1}, picture), std::nullopt);
}

TEST(Geometry, nothingHasAPositionInARectangleWithoutArea) {
  EXPECT_EQ(normalised({.x = 1, .y = 1}, {.x = 1, .y = 1, .width = 0, .height = 5}), std::nullopt);
  EXPECT_EQ(normalised({.x = 1, .y = 1}, {.x = 1, .y = 1, .width = 5, .height = -1}), std::nullopt);
  EXPECT_EQ(normalised({.x = 1, .y = 1}, {.x = 1, .y = 1, .width = 5, .height = notANumber}),
            std::nullopt);
}

TEST(Geometry, aPointThatIsNoNumberHasNoPosition) {
  EXPECT_EQ(normalised({.x = notANumber, .y = 300}, picture), std::nullopt);
  EXPECT_EQ(normalised({.x = 300, .y = infinity}, picture), std::nullopt);
}

TEST(Geometry, rectanglesIntersectWhenTheyShareAnArea) {
  constexpr Rect other{.x = 1000, .y = 600, .width = 500, .height = 500};
  EXPECT_TRUE(intersects(picture, other));
  EXPECT_TRUE(intersects(other, picture));
  EXPECT_FALSE(intersects(picture, {.x = 1100, .y = 200, .width = 10, .height = 10}));
  EXPECT_FALSE(intersects(picture, {.x = 100, .y = 190, .width = 10, .height = 10}));
}

TEST(Geometry, aWindowLargerThanTheBufferIsScaledDownFromItsTopLeft) {
  EXPECT_EQ(fittedToBuffer({.x = 10, .y = 20, .width = 800, .height = 600},
                           {.width = 400, .height = 300}),
            (Rect{.x = 10, .y = 20, .width = 800, .height = 600}));
  EXPECT_EQ(fittedToBuffer({.x = 10, .y = 20, .width = 400, .height = 600},
                           {.width = 400, .height = 300}),
            (Rect{.x = 10, .y = 20, .width = 800, .height = 600}));
}

TEST(Geometry, aWindowSmallerThanTheBufferIsShownAtItsSize) {
  EXPECT_EQ(fittedToBuffer({.x = 10, .y = 20, .width = 200, .height = 300},
                           {.width = 400, .height = 300}),
            (Rect{.x = 10, .y = 20, .width = 400, .height = 300}));
}

TEST(Geometry, aSizeWithoutAreaLeavesAWindowAsItIs) {
  constexpr Rect frame{.x = 10, .y = 20, .width = 200, .height = 300};
  EXPECT_EQ(fittedToBuffer(frame, {.width = 0, .height = 300}), frame);
  constexpr Rect flat{.x = 10, .y = 20, .width = 200, .height = 0};
  EXPECT_EQ(fittedToBuffer(flat, {.width = 400, .height = 300}), flat);
}

TEST(Geometry, pixelSizesAreEven) {
  EXPECT_EQ(evenPixelSize({.width = 1001, .height = 600}, 1),
            (PixelSize{.width = 1000, .height = 600}));
  EXPECT_EQ(evenPixelSize({.width = 1440, .height = 900}, 2),
            (PixelSize{.width = 2880, .height = 1800}));
  EXPECT_EQ(evenPixelSize({.width = 100.75, .height = 33.4}, 1.5),
            (PixelSize{.width = 150, .height = 50}));
}

TEST(Geometry, aSenselessSizeGivesAPixelSizeThatIsANumber) {
  EXPECT_EQ(evenPixelSize({.width = -3, .height = notANumber}, 1), (PixelSize{}));
  const auto huge = evenPixelSize({.width = infinity, .height = 1e300}, 2);
  EXPECT_GT(huge.width, 0);
  EXPECT_EQ(huge.width, huge.height);
}

TEST(Geometry, aRectangleIsFlippedAboutTheBottomOfThePrimaryDisplay) {
  constexpr double primaryHeight = 1000;
  constexpr Rect onScreen{.x = 40, .y = 100, .width = 300, .height = 200};
  constexpr Rect inGlobalPoints{.x = 40, .y = 700, .width = 300, .height = 200};
  EXPECT_EQ(flipped(onScreen, primaryHeight), inGlobalPoints);
  EXPECT_EQ(flipped(inGlobalPoints, primaryHeight), onScreen);
}

}  // namespace
}  // namespace vesk::capture
