#include <gtest/gtest.h>

#include <random>
#include <set>
#include <utility>

#include "capture/x11/PixelRegion.h"

namespace vesk::capture::x11 {
namespace {

using media::PixelRect;
using Points = std::set<std::pair<int, int>>;

Points pointsOf(const PixelRect& rect) {
  Points points;
  for (int y = rect.y; y < rect.y + rect.height; ++y) {
    for (int x = rect.x; x < rect.x + rect.width; ++x) points.emplace(x, y);
  }
  return points;
}

/// Each pixel once, or the rectangles overlap.
Points pointsOf(const PixelRegion& region) {
  Points points;
  for (const PixelRect& rect : region.rects()) {
    EXPECT_FALSE(isEmpty(rect));
    for (const auto& point : pointsOf(rect)) EXPECT_TRUE(points.insert(point).second);
  }
  return points;
}

Points minus(Points from, const Points& what) {
  for (const auto& point : what) from.erase(point);
  return from;
}

TEST(PixelRegion, addsSubtractsAndCutsAsSetsOfPixelsDo) {
  std::mt19937 random{7};
  const auto number = [&](int below) { return static_cast<int>(random() % below); };
  const auto anyRect = [&] {
    return PixelRect{.x = number(10) - 3, .y = number(10), .width = number(8), .height = number(8)};
  };
  for (int round = 0; round < 300; ++round) {
    PixelRegion region;
    Points points;
    for (int step = 0; step < 6; ++step) {
      const PixelRect rect = anyRect();
      if (number(3) == 0) {
        region.subtract(rect);
        points = minus(points, pointsOf(rect));
      } else {
        region.add(rect);
        points.merge(pointsOf(rect));
      }
    }
    ASSERT_EQ(pointsOf(region), points);
    const PixelRegion other{anyRect()};
    const Points rest = minus(points, pointsOf(other));
    EXPECT_EQ(pointsOf(without(region, other)), rest);
    EXPECT_EQ(pointsOf(region.within(other)), minus(points, rest));
    EXPECT_TRUE(areEqual(region, without(region, PixelRegion{})));
    EXPECT_EQ(areEqual(region, without(region, other)), rest == points);
  }
}

TEST(PixelRegion, hasBoundsAroundAllOfIt) {
  PixelRegion region{PixelRect{.x = 5, .y = 6, .width = 2, .height = 2}};
  region.add({.x = -1, .y = 9, .width = 1, .height = 3});
  EXPECT_EQ(region.bounds(), (PixelRect{.x = -1, .y = 6, .width = 8, .height = 6}));
  EXPECT_EQ(region.moved(1, -1).bounds(), (PixelRect{.x = 0, .y = 5, .width = 8, .height = 6}));
  EXPECT_TRUE(isEmpty(PixelRegion{}.bounds()));
}

}  // namespace
}  // namespace vesk::capture::x11
