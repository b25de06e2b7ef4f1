#include <gtest/gtest.h>

#include "capture/contract/DisplayGeometryContract.h"
#include "capture/fake/FakeDisplayGeometry.h"

namespace vesk::capture {
namespace {

using fake::FakeDisplayGeometry;

class FakeDisplayRig {
 public:
  const DisplayGeometry& geometry() { return geometry_; }
  std::uint32_t openWindow(const std::string& title) {
    geometry_.putWindow({.id = ++lastWindow_,
                         .title = title,
                         .owner = ScreenWindow::Owner{.applicationID = "editor",
                                                      .applicationName = "编辑器",
                                                      .processID = 17},
                         .frame = {.x = 100, .y = 100, .width = 300, .height = 200}});
    return lastWindow_;
  }
  void moveWindow(std::uint32_t id, double dx, double dy) {
    change(id, [&](package::Rect& frame) {
      frame.x += dx;
      frame.y += dy;
    });
  }
  void resizeWindow(std::uint32_t id, double dx, double dy) {
    change(id, [&](package::Rect& frame) {
      frame.width += dx;
      frame.height += dy;
    });
  }
  void closeWindow(std::uint32_t id) { geometry_.closeWindow(id); }

 private:
  template <typename Change>
  void change(std::uint32_t id, Change apply) {
    const auto windows = geometry_.windows().value();
    auto window = *std::ranges::find(windows, id, &ScreenWindow::id);
    apply(window.frame);
    geometry_.putWindow(window);
  }

  FakeDisplayGeometry geometry_;
  std::uint32_t lastWindow_ = 0;
};

TEST(FakeDisplayGeometry, aWindowOfASingleUnitHasNoFrame) {
  FakeDisplayGeometry geometry;
  geometry.putWindow({.id = 1, .frame = {.x = 0, .y = 0, .width = 1, .height = 200}});
  geometry.putWindow({.id = 2, .frame = {.x = 0, .y = 0, .width = 2, .height = 2}});
  EXPECT_EQ(geometry.windowFrame(1), std::nullopt);
  EXPECT_EQ(geometry.windowFrame(2), (package::Rect{.x = 0, .y = 0, .width = 2, .height = 2}));
  EXPECT_EQ(geometry.lookupCount(), 2);
}

TEST(FakeDisplayGeometry, noDisplayIsFocusedThatDoesNotExist) {
  FakeDisplayGeometry geometry;
  EXPECT_EQ(geometry.focusedDisplay(), geometry.displays().front());
  geometry.focusDisplay(99);
  EXPECT_EQ(geometry.focusedDisplay(), std::nullopt);
}

}  // namespace

namespace contract {
INSTANTIATE_TYPED_TEST_SUITE_P(Fake, DisplayGeometryContract, FakeDisplayRig);
}  // namespace contract

}  // namespace vesk::capture
