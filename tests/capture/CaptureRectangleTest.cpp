#include <gtest/gtest.h>

#include "capture/CaptureRectangle.h"
#include "capture/fake/FakeDisplayGeometry.h"

namespace vesk::capture {
namespace {

using fake::FakeDisplayGeometry;
using package::CaptureScope;
using package::Rect;

constexpr Display target{.id = 1, .frame = {.x = 0, .y = 0, .width = 1920, .height = 1080}};
constexpr Rect frame{.x = 100, .y = 200, .width = 400, .height = 300};
constexpr double start = 50;

class CaptureRectangleOfAWindow : public ::testing::Test {
 protected:
  CaptureRectangleOfAWindow() { place(frame); }
  void place(const Rect& rect) { geometry_.putWindow({.id = 3, .frame = rect}); }
  CaptureRectangle rectangle() { return {{CaptureScope::Window{3}}, target, geometry_, start}; }

  FakeDisplayGeometry geometry_;
};

TEST_F(CaptureRectangleOfAWindow, followsAWindowThatMovesAfterATenthOfASecond) {
  auto rectangle = this->rectangle();
  const Rect moved{.x = 700, .y = 20, .width = 400, .height = 300};
  place(moved);
  EXPECT_EQ(rectangle.current(start + 0.09), frame);
  EXPECT_EQ(rectangle.current(start + 0.11), moved);
}

TEST_F(CaptureRectangleOfAWindow, isLookedUpTenTimesASecondAtMost) {
  auto rectangle = this->rectangle();
  const int before = geometry_.lookupCount();
  for (int tick = 0; tick < 120; ++tick) rectangle.current(start + tick / 120.0);
  EXPECT_GE(geometry_.lookupCount() - before, 8);
  EXPECT_LE(geometry_.lookupCount() - before, 10);
}

TEST_F(CaptureRectangleOfAWindow, aWindowOfTwiceTheSizeIsScaledToFitThePicture) {
  auto rectangle = this->rectangle();
  place({.x = 100, .y = 200, .width = 800, .height = 600});
  const auto at = normalised({.x = 500, .y = 500}, rectangle.current(start + 1));
  EXPECT_EQ(at, (PicturePoint{.x = 0.5, .y = 0.5}));
}

TEST_F(CaptureRectangleOfAWindow, aWindowOfHalfTheWidthFillsTheLeftHalfOfThePicture) {
  auto rectangle = this->rectangle();
  place({.x = 100, .y = 200, .width = 200, .height = 300});
  const auto at = normalised({.x = 300, .y = 200}, rectangle.current(start + 1));
  EXPECT_EQ(at, (PicturePoint{.x = 0.5, .y = 0}));
}

TEST_F(CaptureRectangleOfAWindow, theLastKnownRectangleStandsForAWindowThatHasGone) {
  auto rectangle = this->rectangle();
  const Rect moved{.x = 700, .y = 20, .width = 400, .height = 300};
  place(moved);
  EXPECT_EQ(rectangle.current(start + 1), moved);
  geometry_.closeWindow(3);
  EXPECT_EQ(rectangle.current(start + 2), moved);
}

TEST_F(CaptureRectangleOfAWindow, aWindowThatIsNotThereAtTheStartIsTheTargetUntilItComes) {
  geometry_.closeWindow(3);
  auto rectangle = this->rectangle();
  EXPECT_EQ(rectangle.current(start), target.frame);
}

TEST(CaptureRectangle, thatOfADisplayOrRegionStaysAsItWas) {
  FakeDisplayGeometry geometry;
  CaptureRectangle display{{CaptureScope::Display{1}}, target, geometry, start};
  CaptureRectangle region{
      {CaptureScope::Region{.displayID = 1,
                            .rect = {.x = 10, .y = 980, .width = 60, .height = 40}}},
      target,
      geometry,
      start};
  geometry.setDisplays({{.id = 1, .frame = {.x = 0, .y = 0, .width = 640, .height = 480}}});
  EXPECT_EQ(display.current(start + 9), target.frame);
  EXPECT_EQ(region.current(start + 9), (Rect{.x = 10, .y = 60, .width = 60, .height = 40}));
}

}  // namespace
}  // namespace vesk::capture
