#include <gtest/gtest.h>

#include "capture/ScopeSelection.h"
#include "capture/fake/FakeDisplayGeometry.h"

namespace vesk::capture {
namespace {

using fake::FakeDisplayGeometry;
using package::CaptureScope;
using Kind = ScopeSelection::Kind;

const CaptureScope defaultScope{CaptureScope::Display{4}};
constexpr package::Rect region{.x = 10, .y = 20, .width = 300, .height = 200};

class ScopeSelectionTest : public ::testing::Test {
 protected:
  ScopeSelectionTest() {
    geometry_.setDisplays({{.id = 1}, {.id = 4}});
    geometry_.focusDisplay(4);
  }

  FakeDisplayGeometry geometry_;
  ScopeSelection selection_{geometry_};
  int changes_ = 0;
  package::ChangeSignal::Subscription subscription_ = selection_.onChange([this] { ++changes_; });
};

TEST_F(ScopeSelectionTest, atFirstItIsTheDefaultDisplay) {
  EXPECT_EQ(selection_.kind(), Kind::display);
  EXPECT_EQ(selection_.resolvedScope(), defaultScope);
  EXPECT_TRUE(selection_.isReady());
}

TEST_F(ScopeSelectionTest, withoutAFocusedDisplayThePrimaryOneIsTheDefault) {
  geometry_.focusDisplay(99);
  EXPECT_EQ(selection_.resolvedScope(), CaptureScope{CaptureScope::Display{1}});
}

TEST_F(ScopeSelectionTest, aWindowIsReadyOnceItIsPicked) {
  selection_.setKind(Kind::window);
  EXPECT_EQ(selection_.resolvedScope(), defaultScope);
  EXPECT_FALSE(selection_.isReady());
  selection_.setPickedWindow(WindowChoice{.id = 8});
  EXPECT_EQ(selection_.resolvedScope(), CaptureScope{CaptureScope::Window{8}});
  EXPECT_TRUE(selection_.isReady());
}

TEST_F(ScopeSelectionTest, aRegionNeedsItsDisplayToBeResolvedButNotToBeReady) {
  selection_.setKind(Kind::region);
  EXPECT_FALSE(selection_.isReady());
  selection_.setPickedRegion(region);
  EXPECT_TRUE(selection_.isReady());
  EXPECT_EQ(selection_.resolvedScope(), defaultScope);
  selection_.setPickedRegionDisplay(1);
  const CaptureScope expected{CaptureScope::Region{.displayID = 1, .rect = region}};
  EXPECT_EQ(selection_.resolvedScope(), expected);
}

TEST_F(ScopeSelectionTest, whatWasPickedOutlastsAChangeOfKind) {
  selection_.setPickedWindow(WindowChoice{.id = 8});
  selection_.setKind(Kind::window);
  selection_.setKind(Kind::display);
  EXPECT_EQ(selection_.resolvedScope(), defaultScope);
  selection_.setKind(Kind::window);
  EXPECT_EQ(selection_.resolvedScope(), CaptureScope{CaptureScope::Window{8}});
}

TEST_F(ScopeSelectionTest, observersHearOfChangesOnly) {
  const WindowChoice window{.id = 8, .title = "信"};
  selection_.setPickedWindow(window);
  EXPECT_EQ(changes_, 1);
  selection_.setPickedWindow(window);
  EXPECT_EQ(changes_, 1);
  auto renamed = window;
  renamed.title = "回信";
  selection_.setPickedWindow(renamed);
  EXPECT_EQ(changes_, 2);
  selection_.setPickedRegionDisplay(1);
  selection_.setPickedRegionDisplay(1);
  EXPECT_EQ(changes_, 3);
  selection_.setPickedRegion(region);
  selection_.setWindowList({window});
  EXPECT_EQ(changes_, 5);
  EXPECT_EQ(selection_.windowList(), std::vector{window});
}

}  // namespace
}  // namespace vesk::capture
