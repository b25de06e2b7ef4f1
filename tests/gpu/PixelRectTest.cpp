#include <gtest/gtest.h>

#include "gpu/PixelRect.h"

namespace vesk::gpu {
namespace {

TEST(PixelRect, theIntersectionIsWhatBothCover) {
  const PixelRect rect{2, 3, 10, 10};
  EXPECT_EQ(rect.intersection({5, 0, 20, 5}), (PixelRect{5, 3, 7, 2}));
  EXPECT_EQ(rect.intersection(rect), rect);
}

TEST(PixelRect, rectanglesThatOnlyTouchDoNotMeet) {
  const PixelRect rect{0, 0, 4, 4};
  EXPECT_TRUE(rect.intersection({4, 0, 4, 4}).isEmpty());
  EXPECT_TRUE(rect.intersection({0, 4, 4, 4}).isEmpty());
  EXPECT_FALSE(rect.intersection({3, 3, 4, 4}).isEmpty());
}

TEST(PixelRect, theIntersectionOfDistantOnesHasNoNegativeSize) {
  const PixelRect common = PixelRect{0, 0, 4, 4}.intersection({100, 50, 4, 4});
  EXPECT_TRUE(common.isEmpty());
  EXPECT_GE(common.width, 0);
  EXPECT_GE(common.height, 0);
}

TEST(PixelRect, theUnionHoldsBothAndIgnoresAnEmptyOne) {
  const PixelRect rect{2, 3, 4, 5};
  EXPECT_EQ(rect.united({10, 0, 2, 4}), (PixelRect{2, 0, 10, 8}));
  EXPECT_EQ(rect.united({100, 100, 0, 7}), rect);
  EXPECT_EQ((PixelRect{100, 100, 0, 7}).united(rect), rect);
}

}  // namespace
}  // namespace vesk::gpu
