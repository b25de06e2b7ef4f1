#include <gtest/gtest.h>

#include "capture/Geometry.h"
#include "capture/ScopeGeometry.h"
#include "capture/fake/FakeDisplayGeometry.h"

namespace vesk::capture {
namespace {

using fake::FakeDisplayGeometry;
using package::CaptureScope;
using package::Rect;

// A second display above the primary one, as the display server counts: its top is the screen's.
constexpr Display primary{.id = 1, .frame = {.x = 0, .y = 800, .width = 1600, .height = 1000}};
constexpr Display above{
    .id = 2, .frame = {.x = 100, .y = 0, .width = 1400, .height = 800}, .scaleFactor = 2};

constexpr Rect onBoth{.x = 200, .y = 700, .width = 300, .height = 200};
constexpr Rect onAbove{.x = 200, .y = 100, .width = 300, .height = 200};

class ScopeGeometry : public ::testing::Test {
 protected:
  ScopeGeometry() { geometry_.setDisplays({primary, above}); }

  CaptureScope windowAt(const Rect& frame) {
    geometry_.putWindow({.id = 5, .frame = frame});
    return {CaptureScope::Window{5}};
  }

  FakeDisplayGeometry geometry_;
};

TEST_F(ScopeGeometry, thePrimaryHeightIsThatOfTheFirstDisplayAlone) {
  EXPECT_EQ(primaryHeight({{.id = 1, .frame = {.x = 0, .y = 0, .width = 1600, .height = 1000}}}),
            1000);
  // In the plane of a primary display at the top, what is above it is negative.
  EXPECT_EQ(primaryHeight({{.id = 1, .frame = {.x = 0, .y = 0, .width = 1600, .height = 1000}},
                           {.id = 2, .frame = {.x = 0, .y = -800, .width = 1600, .height = 800}}}),
            1000);
  EXPECT_EQ(primaryHeight({primary, above}), 1800);
  EXPECT_EQ(primaryHeight({}), 0);
}

TEST_F(ScopeGeometry, aWindowOnADisplayAboveThePrimaryOneIsAboveItsHeightInGlobalPoints) {
  const auto flippedDisplay = flipped(above.frame, primaryHeight(geometry_.displays()));
  EXPECT_EQ(flippedDisplay, (Rect{.x = 100, .y = 1000, .width = 1400, .height = 800}));
  const auto window = flipped(onAbove, primaryHeight(geometry_.displays()));
  EXPECT_EQ(window.y, 1500);
  const Rect counted{.x = 200, .y = -700, .width = 300, .height = 200};  // from the primary's top
  EXPECT_EQ(flipped(counted, 1000), window);
}

TEST_F(ScopeGeometry, displaysAreFoundByTheirNumber) {
  EXPECT_EQ(displayWithID(2, geometry_), above);
  EXPECT_EQ(displayWithID(3, geometry_), std::nullopt);
}

TEST_F(ScopeGeometry, theDefaultDisplayIsTheFocusedOneElseThePrimaryOne) {
  geometry_.focusDisplay(2);
  EXPECT_EQ(defaultDisplay(geometry_), above);
  geometry_.focusDisplay(9);
  EXPECT_EQ(defaultDisplay(geometry_), primary);
  geometry_.setDisplays({});
  EXPECT_EQ(defaultDisplay(geometry_), std::nullopt);
}

TEST_F(ScopeGeometry, aWindowBelongsToTheFirstDisplayThatItTouches) {
  EXPECT_EQ(displayOf(windowAt(onBoth), geometry_), primary);
  EXPECT_EQ(displayOf(windowAt(onAbove), geometry_), above);
}

TEST_F(ScopeGeometry, aWindowThatHasGoneOrIsNowhereBelongsToTheFocusedDisplay) {
  geometry_.focusDisplay(2);
  EXPECT_EQ(displayOf({CaptureScope::Window{77}}, geometry_), above);
  EXPECT_EQ(displayOf(windowAt({.x = 5000, .y = 0, .width = 50, .height = 50}), geometry_), above);
}

TEST_F(ScopeGeometry, aDisplayOrRegionBelongsToItsDisplayOrToNone) {
  EXPECT_EQ(displayOf({CaptureScope::Display{2}}, geometry_), above);
  EXPECT_EQ(displayOf({CaptureScope::Region{.displayID = 1}}, geometry_), primary);
  EXPECT_EQ(displayOf({CaptureScope::Display{9}}, geometry_), std::nullopt);
  EXPECT_EQ(displayOf({CaptureScope::Region{.displayID = 9}}, geometry_), std::nullopt);
}

TEST_F(ScopeGeometry, aScopeIsARectangleOfTheScreen) {
  EXPECT_EQ(rectangleOf({CaptureScope::Display{2}}, primary, geometry_), above.frame);
  EXPECT_EQ(rectangleOf(windowAt(onAbove), primary, geometry_), onAbove);
  const CaptureScope region{CaptureScope::Region{
      .displayID = 2, .rect = {.x = 200, .y = 1500, .width = 300, .height = 200}}};
  EXPECT_EQ(rectangleOf(region, primary, geometry_), onAbove);
}

TEST_F(ScopeGeometry, aDisplayOrWindowThatHasGoneIsTheWholeTarget) {
  EXPECT_EQ(rectangleOf({CaptureScope::Display{9}}, above, geometry_), above.frame);
  EXPECT_EQ(rectangleOf({CaptureScope::Window{77}}, above, geometry_), above.frame);
}

TEST_F(ScopeGeometry, aRegionIsStoredFromTheBottomLeftOfItsDisplay) {
  const auto stored = [&](std::uint32_t displayID, const Rect& rect) {
    const CaptureScope scope{CaptureScope::Region{.displayID = displayID, .rect = rect}};
    return std::get<CaptureScope::Region>(scopeToStore(scope, geometry_.displays()).value);
  };
  const Rect rect{.x = 200, .y = 1500, .width = 300, .height = 200};
  EXPECT_EQ(stored(2, rect).rect, (Rect{.x = 100, .y = 500, .width = 300, .height = 200}));
  EXPECT_EQ(stored(2, rect).displayID, 2U);
  EXPECT_EQ(stored(1, rect).rect, rect);
  EXPECT_EQ(stored(9, rect).rect, rect);
}

TEST_F(ScopeGeometry, otherScopesAreStoredAsTheyAre) {
  const CaptureScope display{CaptureScope::Display{2}};
  const CaptureScope window{CaptureScope::Window{5}};
  EXPECT_EQ(scopeToStore(display, geometry_.displays()), display);
  EXPECT_EQ(scopeToStore(window, geometry_.displays()), window);
}

TEST_F(ScopeGeometry, regionsAreEqualWhenDisplayAndRectangleAre) {
  const CaptureScope::Region region{.displayID = 1, .rect = onBoth};
  auto other = region;
  EXPECT_EQ(region, other);
  other.rect.width += 1;
  EXPECT_NE(region, other);
  EXPECT_NE(region, (CaptureScope::Region{.displayID = 2, .rect = onBoth}));
}

}  // namespace
}  // namespace vesk::capture
