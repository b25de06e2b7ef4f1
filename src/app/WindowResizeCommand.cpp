#include "app/WindowResizeCommand.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cmath>
#include <cstdint>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "app/RecordedRun.h"
#include "capture/OwnApplication.h"
#include "capture/WindowChoice.h"

namespace vesk::app {
namespace {

using capture::WindowChoice;

constexpr std::string_view flag = "--diag-window-resize";

std::string rectInWords(const std::optional<package::Rect>& rect) {
  const auto r = rect.value_or(package::Rect{});
  return fmt::format("({:.1f},{:.1f}) {:.0f}×{:.0f}", r.x, r.y, r.width, r.height);
}

int refuse(const CommandContext& context, std::string_view name,
           const std::vector<WindowChoice>& windows) {
  std::set<std::string> names;
  for (const auto& window : windows) names.insert(window.appName);
  fmt::print(context.out, "找不到 App 名含「{}」的窗口。可选：{}\n", name, fmt::join(names, " / "));
  return 1;
}

double secondsOf(const CommandLine& commandLine) {
  const auto text = commandLine.secondValue(flag);
  return (text ? parseNumber(*text) : std::nullopt).value_or(defaultRunSeconds);
}

}  // namespace

CheckOutcome windowResizeVerdict(const capture::ScreenSize& before,
                                 const capture::ScreenSize& after, std::int64_t changes) {
  const bool isResized =
      std::abs(after.width - before.width) > 1 || std::abs(after.height - before.height) > 1;
  if (!isResized) {
    return {
        "  ✓ 通过，但**必要不充分**：这一趟窗口尺寸没变过，什么都没测到。\n"
        "     要测就得在录制那几秒里真的去拖窗口边缘。\n",
        0};
  }
  if (changes > 0) {
    return {fmt::format("  ✓ 窗口尺寸变化被 contentRect 记录到了（{} 次）\n", changes), 0};
  }
  return {"  ✗ 窗口尺寸变了，但 contentRect 一次都没变 —— 采集侧完全没跟上\n", 1};
}

int diagnoseWindowResize(const CommandContext& context) {
  const auto name = context.commandLine.value(flag).value_or("");
  const double seconds = secondsOf(context.commandLine);
  fmt::print(context.out, "=== 窗口缩放 ↔ 采集矩形 ===\n");
  auto stage = context.makeCaptureStage();
  if (!stage) return failRun(context, "启动失败：" + stage.error());
  const auto& geometry = *(*stage)->backends().geometry;
  const auto windows = geometry.windows();
  if (!windows) return failRun(context, windows.error().message);
  const auto choices = capture::windowChoices(*windows, capture::ownApplicationID);
  const auto chosen = std::ranges::find_if(
      choices, [&](const WindowChoice& window) { return window.appName.contains(name); });
  if (chosen == choices.end()) return refuse(context, name, choices);

  const auto before = capture::sizeOf(chosen->frame);
  fmt::print(context.out,
             "  目标：{} — {}\n  开始尺寸 {:.0f}×{:.0f}\n  录 {:.0f}s，期间请缩放这个窗口\n",
             chosen->appName, chosen->title, before.width, before.height, seconds);
  std::fflush(context.out);
  const auto package =
      recordRun(**stage, {.order = {.scope = {package::CaptureScope::Window{chosen->id}}},
                          .seconds = seconds,
                          .limit = seconds + runGrace,
                          .perform = {}});
  if (!package)
    return failRun(context, package.error().timedOut ? "超时" : package.error().message);

  const auto frame = geometry.windowFrame(chosen->id);
  const auto after = frame ? capture::sizeOf(*frame) : before;
  const auto report =
      (*stage)->session().lastCaptureReport().value_or(capture::ScreenCaptureEngine::Report{});
  fmt::print(context.out,
             "  结束尺寸 {:.0f}×{:.0f}\n  首帧 contentRect  {}\n  末帧 contentRect  {}\n"
             "  contentRect 变化次数 {}\n",
             after.width, after.height, rectInWords(report.firstContentRect),
             rectInWords(report.lastContentRect), report.contentRectChanges);
  const auto outcome = windowResizeVerdict(before, after, report.contentRectChanges);
  fmt::print(context.out, "{}", outcome.text);
  return outcome.exitCode;
}

}  // namespace vesk::app
