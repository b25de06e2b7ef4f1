#pragma once

#include <gtest/gtest.h>

#include <algorithm>
#include <concepts>
#include <cstdint>
#include <optional>
#include <set>
#include <string>

#include "capture/DisplayGeometry.h"
#include "capture/Geometry.h"
#include "capture/contract/Heard.h"

// What every display geometry keeps to. Instantiate the suite in this namespace, with a rig:
//   INSTANTIATE_TYPED_TEST_SUITE_P(X11, DisplayGeometryContract, X11DisplayRig);
namespace vesk::capture::contract {

/// A display geometry and somebody who moves windows. One is made for each test; it throws when it
/// cannot be set up. An action may return before it has taken effect.
template <typename Rig>
concept DisplayGeometryRig =
    std::default_initializable<Rig> &&
    requires(Rig rig, const std::string& title, std::uint32_t id, double length) {
      { rig.geometry() } -> std::convertible_to<const DisplayGeometry&>;
      /// Opens a window of an application, wholly on a display and with 100 units of room to its
      /// right and below. The result is its number.
      { rig.openWindow(title) } -> std::convertible_to<std::uint32_t>;
      rig.moveWindow(id, length, length);    ///< by so much to the right and down
      rig.resizeWindow(id, length, length);  ///< by so much wider and higher
      rig.closeWindow(id);
    };

template <DisplayGeometryRig Rig>
class DisplayGeometryContract : public ::testing::Test {
 protected:
  std::optional<ScreenWindow> listed(std::uint32_t id) {
    const auto windows = rig_.geometry().windows();
    if (!windows) return std::nullopt;
    const auto found = std::ranges::find(*windows, id, &ScreenWindow::id);
    if (found == windows->end()) return std::nullopt;
    return *found;
  }

  /// The frame of a window that has just been opened, once it has one; else one without area.
  package::Rect frameOf(std::uint32_t id) {
    std::optional<package::Rect> frame;
    (void)comesTrue([&] { return (frame = rig_.geometry().windowFrame(id)).has_value(); });
    return frame.value_or(package::Rect{});
  }

  Rig rig_;
};
TYPED_TEST_SUITE_P(DisplayGeometryContract);

TYPED_TEST_P(DisplayGeometryContract, displaysHaveAreaAScaleAndDifferentNumbers) {
  const auto displays = this->rig_.geometry().displays();
  ASSERT_FALSE(displays.empty());
  std::set<std::uint32_t> numbers;
  for (const auto& display : displays) {
    EXPECT_GT(display.frame.width, 0);
    EXPECT_GT(display.frame.height, 0);
    EXPECT_GT(display.scaleFactor, 0);
    numbers.insert(display.id);
  }
  EXPECT_EQ(numbers.size(), displays.size());
}

TYPED_TEST_P(DisplayGeometryContract, theFocusedDisplayIsOneOfThem) {
  const auto displays = this->rig_.geometry().displays();
  const auto focused = this->rig_.geometry().focusedDisplay();
  ASSERT_TRUE(focused.has_value());
  EXPECT_NE(std::ranges::find(displays, *focused), displays.end());
}

TYPED_TEST_P(DisplayGeometryContract, anOpenWindowIsListedWithTitleAndOwner) {
  const auto id = this->rig_.openWindow("第一个窗口");
  ASSERT_TRUE(comesTrue([&] {
    const auto window = this->listed(id);
    return window && window->title == "第一个窗口";
  }));
  const auto window = this->listed(id);
  ASSERT_TRUE(window && window->owner);
  EXPECT_FALSE(window->owner->applicationName.empty());
  EXPECT_GT(window->owner->processID, 0);
}

TYPED_TEST_P(DisplayGeometryContract, theListAndTheLookUpAgreeOnAFrameOnADisplay) {
  const auto id = this->rig_.openWindow("窗口");
  ASSERT_TRUE(comesTrue([&] {
    const auto window = this->listed(id);
    return window && this->rig_.geometry().windowFrame(id) == window->frame;
  }));
  const auto frame = this->frameOf(id);
  EXPECT_TRUE(std::ranges::any_of(this->rig_.geometry().displays(), [&](const Display& display) {
    return intersects(display.frame, frame);
  }));
}

TYPED_TEST_P(DisplayGeometryContract, aFrameFollowsItsWindow) {
  const auto id = this->rig_.openWindow("窗口");
  auto expected = this->frameOf(id);
  ASSERT_TRUE(isUsableFrame(expected));
  this->rig_.moveWindow(id, 40, 30);
  expected.x += 40;
  expected.y += 30;
  EXPECT_TRUE(comesTrue([&] { return this->rig_.geometry().windowFrame(id) == expected; }));
  this->rig_.resizeWindow(id, 50, 20);
  expected.width += 50;
  expected.height += 20;
  EXPECT_TRUE(comesTrue([&] { return this->rig_.geometry().windowFrame(id) == expected; }));
}

TYPED_TEST_P(DisplayGeometryContract, aClosedWindowHasGone) {
  const auto id = this->rig_.openWindow("窗口");
  ASSERT_TRUE(isUsableFrame(this->frameOf(id)));
  this->rig_.closeWindow(id);
  EXPECT_TRUE(comesTrue([&] { return !this->rig_.geometry().windowFrame(id); }));
  EXPECT_TRUE(comesTrue([&] { return !this->listed(id); }));
}

TYPED_TEST_P(DisplayGeometryContract, aWindowThatNeverWasHasNoFrame) {
  EXPECT_EQ(this->rig_.geometry().windowFrame(0x1FFFFFFF), std::nullopt);
}

REGISTER_TYPED_TEST_SUITE_P(DisplayGeometryContract, displaysHaveAreaAScaleAndDifferentNumbers,
                            theFocusedDisplayIsOneOfThem, anOpenWindowIsListedWithTitleAndOwner,
                            theListAndTheLookUpAgreeOnAFrameOnADisplay, aFrameFollowsItsWindow,
                            aClosedWindowHasGone, aWindowThatNeverWasHasNoFrame);

}  // namespace vesk::capture::contract
