#include "app/StaticTailCommand.h"

#include <fmt/format.h>

#include <string>
#include <vector>

#include "app/CommandLine.h"
#include "app/RecordedRun.h"
#include "app/ScopeArgument.h"
#include "media/PictureDuration.h"
#include "package/RecordingProject.h"

namespace vesk::app {
namespace {

constexpr double largestGap = 0.5;
constexpr double shortestTail = 0.1;

}  // namespace

std::optional<package::Rect> looseRegion(std::string_view text) {
  std::vector<double> numbers;
  for (const auto piece : piecesBetweenCommas(text)) {
    if (const auto number = parseNumber(piece)) numbers.push_back(*number);
  }
  if (numbers.size() != 4) return std::nullopt;
  return package::Rect{.x = numbers[0], .y = numbers[1], .width = numbers[2], .height = numbers[3]};
}

std::string staticTailReport(const capture::ScreenCaptureEngine::Report& report) {
  std::string text = fmt::format("  帧统计  写入 {}   idle {}   丢 {}\n", report.completeFrames,
                                 report.idleFrames, report.droppedFrames);
  if (report.lastCompletePTS && report.lastAnyPTS) {
    text += fmt::format("  最后一次画面变化 {:.3f}   最后收到帧 {:.3f}   静态尾巴 {:.3f}s\n",
                        *report.lastCompletePTS, *report.lastAnyPTS,
                        *report.lastAnyPTS - *report.lastCompletePTS);
  }
  if (report.idleFrames == 0) {
    text +=
        "  ⚠️ 全程没有 idle 帧 —— 屏幕一直在变（终端光标、菜单栏时钟都算），\n"
        "     这次测不到静态尾巴。要真测得把屏幕彻底静下来。\n";
  }
  return text;
}

CheckOutcome staticTailVerdict(double gap, double tail) {
  if (gap > largestGap) {
    return {fmt::format("  ✗ 成片比实际录制短 {:.2f}s —— 静态画面的尾巴没补上\n", gap), 1};
  }
  if (tail > shortestTail) return {"  ✓ 通过（本次末尾确实静止过，尾巴被补齐了）\n", 0};
  return {
      "  ✓ 通过，但**必要不充分**：本次录制末尾没有静止过，\n"
      "     没测到静态尾巴。补帧逻辑本身由 StaticTailTests 覆盖。\n",
      0};
}

int diagnoseStaticTail(const CommandContext& context) {
  auto stage = context.makeCaptureStage();
  const double seconds =
      context.commandLine.number("--diag-static-tail").value_or(defaultRunSeconds);
  fmt::print(context.out, "=== 静态画面尾巴 ===\n");
  if (!stage) return failRun(context, "启动失败：" + stage.error());
  const auto region = context.commandLine.value("--region");
  const auto scope =
      scopeOf(region ? looseRegion(*region) : std::nullopt, *(*stage)->backends().geometry);
  fmt::print(context.out, "  静置录制 {:.1f}s（期间请别动鼠标/别让屏幕有变化）\n  范围 {}\n",
             seconds, inWords(scope));
  std::fflush(context.out);

  const auto package = recordRun(
      **stage,
      {.order = {.scope = scope}, .seconds = seconds, .limit = seconds + runGrace, .perform = {}});
  if (!package)
    return failRun(context, package.error().timedOut ? "超时" : package.error().message);
  const auto report =
      (*stage)->session().lastCaptureReport().value_or(capture::ScreenCaptureEngine::Report{});
  fmt::print(context.out, "{}", staticTailReport(report));

  const auto project = package::RecordingProject::load(*package, context.now);
  const auto length = media::pictureDuration(*package / "screen.mov");
  if (!project || !length) return failRun(context, "读不出录制包");
  const double wall = project->meta.duration.value_or(0);
  fmt::print(context.out,
             "  墙钟时长      {:.3f}s  (meta.duration)\n"
             "  screen.mov    {:.3f}s\n"
             "  缺口          {:.3f}s\n"
             "  包：{}\n",
             wall, *length, wall - *length, package->string());
  const auto outcome = staticTailVerdict(
      wall - *length, report.lastAnyPTS.value_or(0) - report.lastCompletePTS.value_or(0));
  fmt::print(context.out, "{}", outcome.text);
  return outcome.exitCode;
}

}  // namespace vesk::app
