#include "app/WindowFramesCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <string>
#include <vector>

#include "capture/Geometry.h"
#include "capture/ScopeGeometry.h"

namespace vesk::app {
namespace {

using capture::Display;
using capture::ScreenWindow;
using package::Rect;

double top(const Rect& flipped) {
  return flipped.y + flipped.height;
}

/// The displays' frames with y up from the bottom left of the primary one, and whether a display
/// stands above that.
struct Layout {
  std::vector<Rect> frames;
  double primaryTop = 0;
  double unionTop = 0;

  bool tellsApart() const { return unionTop > primaryTop; }
};

Layout layoutOf(const std::vector<Display>& displays) {
  const double height = capture::primaryHeight(displays);
  Layout layout;
  for (const auto& display : displays) {
    layout.frames.push_back(capture::flipped(display.frame, height));
    layout.unionTop = std::max(layout.unionTop, top(layout.frames.back()));
  }
  layout.primaryTop = top(layout.frames.front());
  return layout;
}

std::string describe(const Layout& layout) {
  std::string text;
  for (std::size_t i = 0; i < layout.frames.size(); ++i) {
    const auto& frame = layout.frames[i];
    text += fmt::format("  屏{}  x={:.0f} y={:.0f} {:.0f}×{:.0f}{}\n", i, frame.x, frame.y,
                        frame.width, frame.height, i == 0 ? "  (主)" : "");
  }
  text += fmt::format("  主屏 maxY={:.0f}  并集顶边={:.0f}\n", layout.primaryTop, layout.unionTop);
  if (layout.tellsApart()) {
    text += fmt::format("  本机布局**有**鉴别力：主屏上方有屏幕，两套基准相差 {:.0f}\n",
                        layout.unionTop - layout.primaryTop);
  } else {
    text +=
        "  ⚠️ 本机布局**没有**鉴别力：主屏上方没有屏幕，两套基准同值。\n"
        "     Y 翻转的 bug 在这台机器上测不出来，靠 DisplayFlipTests 的模拟布局覆盖。\n"
        "     要真机验证请把一块屏摆到主屏上方再跑一次。\n";
  }
  return text;
}

/// Whether the window is looked up at a place on a display. One that has closed meanwhile is not
/// to be judged, and counts as found.
bool isOnADisplay(const ScreenWindow& window, const capture::DisplayGeometry& geometry,
                  const Layout& layout, double primaryHeight) {
  const auto frame = geometry.windowFrame(window.id);
  if (!frame) return true;
  const auto flipped = capture::flipped(*frame, primaryHeight);
  return std::ranges::any_of(
      layout.frames, [&](const Rect& display) { return capture::intersects(display, flipped); });
}

std::string floatingLine(const ScreenWindow& window, double primaryHeight) {
  const auto& frame = window.frame;
  return fmt::format("  ✗ {}  CG({:.0f},{:.0f} {:.0f}×{:.0f}) → AppKit y={:.0f} 不在任何屏幕上\n",
                     window.owner ? window.owner->applicationName : "", frame.x, frame.y,
                     frame.width, frame.height, capture::flipped(frame, primaryHeight).y);
}

}  // namespace

CheckOutcome checkWindowFrames(const capture::DisplayGeometry& geometry) {
  std::string text = "=== 窗口采集矩形 ===\n";
  const auto displays = geometry.displays();
  if (displays.empty()) return {text + "  ✗ 拿不到任何屏幕\n", 1};
  const auto layout = layoutOf(displays);
  text += describe(layout);
  const auto windows = geometry.windows();
  if (!windows) return {text + "  ✗ 无法枚举窗口\n", 1};

  const double primaryHeight = capture::primaryHeight(displays);
  int checked = 0;
  int floating = 0;
  for (const auto& window : *windows) {
    if (!capture::isUsableFrame(window.frame)) continue;
    ++checked;
    if (isOnADisplay(window, geometry, layout, primaryHeight)) continue;
    ++floating;
    text += floatingLine(window, primaryHeight);
  }
  text += fmt::format("  检查了 {} 个窗口，飘出屏幕 {}\n", checked, floating);
  if (checked == 0) return {text + "  ✗ 没有可检查的窗口（需要屏幕录制权限）\n", 1};
  if (floating > 0) {
    return {text + "  ✗ 采集矩形飘出屏幕 → 窗口录制会收不到鼠标事件（画面却正常）\n", 1};
  }
  return {text + (layout.tellsApart() ? "  ✓ 通过（本机布局有鉴别力）\n"
                                      : "  ✓ 通过，但**必要不充分**：本机布局测不出 Y 翻转\n"),
          0};
}

int testWindowFrames(const CommandContext& context) {
  auto stage = context.makeCaptureStage();
  if (!stage) {
    fmt::print(context.out, "=== 窗口采集矩形 ===\n  ✗ 拿不到任何屏幕\n");
    return 1;
  }
  const auto outcome = checkWindowFrames(*(*stage)->backends().geometry);
  fmt::print(context.out, "{}", outcome.text);
  return outcome.exitCode;
}

}  // namespace vesk::app
