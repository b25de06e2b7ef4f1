#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/ScopeArgument.h"
#include "app/StaticTailCommand.h"
#include "capture/fake/FakeDisplayGeometry.h"

namespace vesk::app {
namespace {

using package::CaptureScope;
using package::Rect;
using testing::ElementsAre;
using testing::IsEmpty;

TEST(ScopeArgument, emptyPiecesBetweenCommasAreLeftOut) {
  EXPECT_THAT(piecesBetweenCommas("1,,2,"), ElementsAre("1", "2"));
  EXPECT_THAT(piecesBetweenCommas(",,"), IsEmpty());
  EXPECT_THAT(piecesBetweenCommas(""), IsEmpty());
}

TEST(ScopeArgument, aRegionHasFourNumbersAndBlanksDoNotCount) {
  const auto region = regionArgument("region:10, 20 ,300.5,\t200");
  ASSERT_TRUE(region);
  EXPECT_EQ(*region, (Rect{10, 20, 300.5, 200}));
}

TEST(ScopeArgument, anythingWithoutThePrefixIsTheWholeDisplay) {
  const auto region = regionArgument("display");
  ASSERT_TRUE(region);
  EXPECT_EQ(*region, std::nullopt);
}

TEST(ScopeArgument, aMalformedRegionNamesTheForm) {
  for (const auto* const text : {"region:", "region:1,2,3", "region:1,2,3,4,5", "region:1,2,x,4"}) {
    const auto region = regionArgument(text);
    ASSERT_FALSE(region) << text;
    EXPECT_EQ(region.error(), "region 格式：region:x,y,w,h");
  }
}

TEST(ScopeArgument, theLooseRegionKeepsTheNumbersAmongItsPieces) {
  EXPECT_EQ(looseRegion("1,2,3"), std::nullopt);
  EXPECT_EQ(looseRegion("1,,2,x,3,4"), (Rect{1, 2, 3, 4}));
  EXPECT_EQ(looseRegion("1,2,3,4,5"), std::nullopt);
}

TEST(ScopeArgument, aRegionBelongsToTheDisplayThatItTouches) {
  capture::fake::FakeDisplayGeometry geometry;
  geometry.setDisplays(
      {{.id = 1, .frame = {0, 0, 1000, 1000}}, {.id = 2, .frame = {1000, 0, 1000, 1000}}});
  const Rect right{1100, 100, 50, 50};
  EXPECT_EQ(scopeOf(right, geometry),
            CaptureScope(CaptureScope::Region{.displayID = 2, .rect = right}));
  EXPECT_EQ(scopeOf({}, geometry), CaptureScope(CaptureScope::Display{1}));
  const Rect nowhere{9000, 100, 50, 50};
  EXPECT_EQ(scopeOf(nowhere, geometry),
            CaptureScope(CaptureScope::Region{.displayID = 1, .rect = nowhere}));
}

TEST(ScopeArgument, scopesAreNamed) {
  EXPECT_EQ(inWords({CaptureScope::Display{7}}), "display(7)");
  EXPECT_EQ(inWords({CaptureScope::Window{9}}), "window(9)");
  EXPECT_EQ(inWords({CaptureScope::Region{.displayID = 1, .rect = {0, 1, 2.5, 3}}}),
            "region(1, (0, 1, 2.5, 3))");
}

}  // namespace
}  // namespace vesk::app
