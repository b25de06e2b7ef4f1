#include <gtest/gtest.h>
#include <unistd.h>

#include <algorithm>
#include <memory>
#include <optional>
#include <stdexcept>
#include <string>
#include <vector>

#include "capture/contract/DisplayGeometryContract.h"
#include "capture/x11/TestApplication.h"
#include "capture/x11/TestDisplay.h"
#include "capture/x11/TestUser.h"
#include "capture/x11/WindowTree.h"
#include "capture/x11/X11DisplayGeometry.h"

namespace vesk::capture::x11::test {
namespace {

using contract::comesTrue;
using package::Rect;

class X11DisplayRig {
 public:
  const DisplayGeometry& geometry() { return *geometry_; }
  std::uint32_t openWindow(const std::string& title) {
    const auto id = application_.open({.x = 60, .y = 50, .width = 200, .height = 150}, title);
    if (!comesTrue([&] { return toplevelOf(application_.connection(), id) != id; })) {
      throw std::runtime_error("the window manager gave the window no frame");
    }
    return id;
  }
  void moveWindow(std::uint32_t id, double right, double down) {
    const auto frame = geometry_->windowFrame(id).value();
    application_.move(id, frame.x + right, frame.y + down);
  }
  void resizeWindow(std::uint32_t id, double wider, double higher) {
    const auto size = application_.geometry(id);
    application_.resize(id, size.width + wider, size.height + higher);
  }
  void closeWindow(std::uint32_t id) { application_.close(id); }

 private:
  TestDisplay display_{{.hasWindowManager = true}};
  TestApplication application_{display_.name(), "画板"};
  std::unique_ptr<X11DisplayGeometry> geometry_ = X11DisplayGeometry::open(display_.name()).value();
};

constexpr Rect somewhere{.x = 60, .y = 50, .width = 200, .height = 150};

/// A screen of 640 × 480 that the tests give two monitors side by side.
class X11DisplayGeometryTest : public testing::Test {
 protected:
  explicit X11DisplayGeometryTest(bool hasWindowManager = true)
      : display{{.hasWindowManager = hasWindowManager}} {
    display.sync();
  }

  void makeTwoMonitors() {
    ASSERT_EQ(display.run({"xrandr", "--setmonitor", "L", "320/80x480/120+0+0", "screen"}), 0);
    ASSERT_EQ(display.run({"xrandr", "--setmonitor", "R", "320/80x480/120+320+0", "none"}), 0);
  }
  std::vector<std::uint32_t> listed() {
    std::vector<std::uint32_t> ids;
    const auto windows = geometry->windows().value();
    for (const auto& window : windows) ids.push_back(window.id);
    return ids;
  }
  std::optional<ScreenWindow> listed(std::uint32_t id) {
    const auto windows = geometry->windows().value();
    const auto found = std::ranges::find(windows, id, &ScreenWindow::id);
    if (found == windows.end()) return std::nullopt;
    return *found;
  }
  bool isListed(std::uint32_t id) {
    return comesTrue([&] { return listed(id).has_value(); });
  }

  TestDisplay display;
  TestApplication application{display.name(), "Painter"};
  std::unique_ptr<X11DisplayGeometry> geometry = X11DisplayGeometry::open(display.name()).value();
};

class X11DisplayGeometryWithoutManager : public X11DisplayGeometryTest {
 protected:
  X11DisplayGeometryWithoutManager() : X11DisplayGeometryTest{false} {}
};

TEST_F(X11DisplayGeometryTest, aScreenIsADisplayOfItsSizeInPixels) {
  const auto displays = geometry->displays();
  ASSERT_EQ(displays.size(), 1U);
  EXPECT_EQ(displays[0].frame, (Rect{.x = 0, .y = 0, .width = 640, .height = 480}));
  EXPECT_EQ(displays[0].scaleFactor, 1);
}

TEST_F(X11DisplayGeometryTest, monitorsAreDisplaysAndThePrimaryOneComesFirst) {
  makeTwoMonitors();
  const auto before = geometry->displays();
  ASSERT_EQ(before.size(), 2U);
  EXPECT_NE(before[0].id, before[1].id);

  ASSERT_EQ(display.run({"xrandr", "--delmonitor", "R"}), 0);
  ASSERT_EQ(display.run({"xrandr", "--setmonitor", "*R", "320/80x480/120+320+0", "none"}), 0);
  const auto displays = geometry->displays();
  ASSERT_EQ(displays.size(), 2U);
  EXPECT_EQ(displays[0].frame, (Rect{.x = 320, .y = 0, .width = 320, .height = 480}));
  EXPECT_EQ(displays[1].frame, (Rect{.x = 0, .y = 0, .width = 320, .height = 480}));
}

TEST_F(X11DisplayGeometryTest, aMonitorKeepsItsNumber) {
  makeTwoMonitors();
  const auto before = geometry->displays();
  ASSERT_EQ(display.run({"xrandr", "--delmonitor", "R"}), 0);
  ASSERT_EQ(display.run({"xrandr", "--setmonitor", "R", "160/40x480/120+480+0", "none"}), 0);
  const auto after = X11DisplayGeometry::open(display.name()).value()->displays();
  ASSERT_EQ(before.size(), 2U);
  ASSERT_EQ(after.size(), 2U);
  EXPECT_EQ(after[0].id, before[0].id);
  EXPECT_EQ(after[1].id, before[1].id);
  EXPECT_EQ(after[1].frame.width, 160);
}

TEST_F(X11DisplayGeometryTest, theFocusedDisplayIsThatOfTheActiveWindow) {
  makeTwoMonitors();
  const auto window = application.open({.x = 380, .y = 60, .width = 200, .height = 150}, "右");
  application.activate(window);
  TestUser{display.connection()}.movePointer({.x = 10, .y = 10});
  EXPECT_TRUE(comesTrue([&] { return geometry->focusedDisplay()->frame.x == 320; }));
  application.move(window, 40, 60);
  EXPECT_TRUE(comesTrue([&] { return geometry->focusedDisplay()->frame.x == 0; }));
}

TEST_F(X11DisplayGeometryWithoutManager, theFocusedDisplayIsThatOfThePointerWhereNoWindowIsActive) {
  makeTwoMonitors();
  const TestUser user{display.connection()};
  user.movePointer({.x = 600, .y = 200});
  EXPECT_EQ(geometry->focusedDisplay()->frame.x, 320);
  user.movePointer({.x = 20, .y = 200});
  EXPECT_EQ(geometry->focusedDisplay()->frame.x, 0);
}

TEST_F(X11DisplayGeometryTest, aWindowIsToldWithItsDecoration) {
  const auto id = application.open(somewhere, "图");
  ASSERT_TRUE(isListed(id));
  ASSERT_TRUE(comesTrue([&] { return geometry->windowFrame(id)->height > somewhere.height; }));
  const auto frame = geometry->windowFrame(id).value();
  EXPECT_EQ(frame.x, somewhere.x);
  EXPECT_EQ(frame.y, somewhere.y);
  EXPECT_GE(frame.width, somewhere.width);
  EXPECT_LT(frame.height, somewhere.height + 60);
}

TEST_F(X11DisplayGeometryTest, aWindowIsToldWithTitleApplicationAndProcess) {
  const auto id = application.open(somewhere, "未命名 — 画板");
  ASSERT_TRUE(isListed(id));
  EXPECT_EQ(listed(id)->title, "未命名 — 画板");
  EXPECT_EQ(listed(id)->owner,
            (ScreenWindow::Owner{.applicationID = "Painter",
                                 .applicationName = "Painter",
                                 .processID = static_cast<std::int32_t>(::getpid())}));
}

TEST_F(X11DisplayGeometryTest, anOldTitleIsReadToo) {
  const auto id = application.create(somewhere);
  application.setText(id, "WM_NAME", "caf\xE9");
  application.map(id);
  ASSERT_TRUE(isListed(id));
  EXPECT_EQ(listed(id)->title, "café");
}

TEST_F(X11DisplayGeometryTest, aWindowWithoutATitleHasNone) {
  const auto id = application.create(somewhere);
  application.map(id);
  ASSERT_TRUE(isListed(id));
  EXPECT_EQ(listed(id)->title, std::nullopt);
}

TEST_F(X11DisplayGeometryTest, aWindowWithoutAClassBelongsToItsProcess) {
  const TestApplication nameless{display.name(), ""};
  const auto id = nameless.open(somewhere, "图");
  ASSERT_TRUE(isListed(id));
  const auto owner = listed(id)->owner;
  ASSERT_TRUE(owner);
  EXPECT_FALSE(owner->applicationName.empty());
  EXPECT_EQ(owner->processID, ::getpid());
}

TEST_F(X11DisplayGeometryTest, theUppermostWindowComesFirst) {
  const auto first = application.open(somewhere, "一");
  ASSERT_TRUE(isListed(first));
  const auto second = application.open({.x = 100, .y = 90, .width = 200, .height = 150}, "二");
  ASSERT_TRUE(isListed(second));
  application.activate(second);
  EXPECT_TRUE(comesTrue([&] { return listed() == std::vector{second, first}; }));
  application.activate(first);
  EXPECT_TRUE(comesTrue([&] { return listed() == std::vector{first, second}; }));
}

TEST_F(X11DisplayGeometryTest, desktopAndPanelsAreNotListed) {
  for (const auto* type : {"_NET_WM_WINDOW_TYPE_DESKTOP", "_NET_WM_WINDOW_TYPE_DOCK"}) {
    const auto id = application.create(somewhere);
    application.setType(id, type);
    application.map(id);
  }
  const auto dialog = application.create(somewhere);
  application.setType(dialog, "_NET_WM_WINDOW_TYPE_DIALOG");
  application.map(dialog);
  ASSERT_TRUE(isListed(dialog));
  EXPECT_EQ(listed(), std::vector{dialog});
}

TEST_F(X11DisplayGeometryTest, aWindowThatIsNotShownIsNotListed) {
  const auto id = application.open(somewhere, "图");
  ASSERT_TRUE(isListed(id));
  application.unmap(id);
  EXPECT_TRUE(comesTrue([&] { return !listed(id); }));
}

TEST_F(X11DisplayGeometryTest, aWindowOfASinglePixelHasNoFrame) {
  const TestDisplay plain;
  const TestApplication other{plain.name(), "Other"};
  const auto id = other.open({.x = 5, .y = 5, .width = 1, .height = 1}, "");
  EXPECT_EQ(X11DisplayGeometry::open(plain.name()).value()->windowFrame(id), std::nullopt);
}

TEST_F(X11DisplayGeometryWithoutManager, windowsAreFoundOnTheScreenItself) {
  const auto id = application.open(somewhere, "图");
  ASSERT_EQ(listed(), std::vector{id});
  EXPECT_EQ(listed(id)->frame, somewhere);
  EXPECT_EQ(geometry->windowFrame(id), somewhere);
}

TEST_F(X11DisplayGeometryTest, aServerThatDiesHasNeitherDisplaysNorWindows) {
  const auto id = application.open(somewhere, "图");
  ASSERT_TRUE(isListed(id));
  display.kill();
  EXPECT_TRUE(geometry->displays().empty());
  EXPECT_EQ(geometry->focusedDisplay(), std::nullopt);
  EXPECT_FALSE(geometry->windows());
  EXPECT_EQ(geometry->windowFrame(id), std::nullopt);
}

}  // namespace
}  // namespace vesk::capture::x11::test

namespace vesk::capture::contract {
namespace {

INSTANTIATE_TYPED_TEST_SUITE_P(X11, DisplayGeometryContract, x11::test::X11DisplayRig);

}  // namespace
}  // namespace vesk::capture::contract
