#include "app/SmokeRecordCommand.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cmath>
#include <optional>
#include <utility>

#include "app/RecordedRun.h"
#include "app/ScopeArgument.h"
#include "capture/ScopeGeometry.h"
#include "capture/ScreenTarget.h"
#include "media/VideoReader.h"
#include "motion/ReportText.h"
#include "package/RecordingProject.h"

namespace vesk::app {
namespace {

using capture::PicturePoint;
using package::RecordedEvent;

constexpr int framesPerSecond = 60;
constexpr double limitInSeconds = 20;
constexpr std::chrono::duration<double> secondsBefore{0.5};
constexpr std::chrono::duration<double> secondsAtEachProbe{0.4};
constexpr double largestDeviation = 0.02;
constexpr double outermost = 0.001;

/// Spread over the picture, none of them the mirror image of another.
constexpr std::array<PicturePoint, 6> probePlaces{
    {{0.5, 0.5}, {0.1, 0.2}, {0.9, 0.15}, {0.75, 0.8}, {0.2, 0.9}, {0.4, 0.35}}};

bool isOutside(const RecordedEvent& event) {
  const auto beyond = [](double value) { return value < -outermost || value > 1 + outermost; };
  return beyond(event.x.value_or(0)) || beyond(event.y.value_or(0));
}

/// Where the log says that the pointer was when it left a probe.
std::optional<PicturePoint> recordedPlace(const PointerProbe& probe,
                                          const std::vector<RecordedEvent>& events) {
  std::optional<PicturePoint> last;
  for (const auto& event : events) {
    if (event.type == RecordedEvent::Kind::move && event.t <= probe.leftAt && event.x && event.y) {
      last = PicturePoint{.x = *event.x, .y = *event.y};
    }
  }
  return last;
}

/// A probe without a record deviates by the whole picture.
double deviation(const PointerProbe& probe, const std::optional<PicturePoint>& recorded) {
  return recorded ? std::hypot(recorded->x - probe.place.x, recorded->y - probe.place.y) : 1.0;
}

std::string probeLines(const std::vector<PointerProbe>& probes,
                       const std::vector<RecordedEvent>& events, double& largest) {
  std::string text;
  for (const auto& probe : probes) {
    const auto recorded = recordedPlace(probe, events);
    const double deviates = deviation(probe, recorded);
    largest = std::max(largest, deviates);
    text += fmt::format(
        "    探针 ({:.2f},{:.2f}) → 记录 {}  偏差 {:.4f}\n", probe.place.x, probe.place.y,
        recorded ? fmt::format("({:.3f},{:.3f})", recorded->x, recorded->y) : "无", deviates);
  }
  return text;
}

/// Puts the pointer on each probe and stays there for a moment.
class ProbeTour {
 public:
  ProbeTour(const package::Rect& area, std::vector<PointerProbe>& probes)
      : area_{area}, probes_{probes} {}

  void operator()(CaptureStage& stage) const {
    stage.runFor(secondsBefore);
    const capture::MonotonicClock clock;
    for (const auto& place : probePlaces) {
      const capture::ScreenPoint target{.x = area_.x + place.x * area_.width,
                                        .y = area_.y + place.y * area_.height};
      if (!stage.backends().injector->movePointer(target)) return;
      stage.runFor(secondsAtEachProbe);
      probes_.push_back({.place = place, .leftAt = clock.now()});
    }
  }

 private:
  package::Rect area_;
  std::vector<PointerProbe>& probes_;
};

int failSmoke(const CommandContext& context, std::string_view message) {
  fmt::print(context.out, "✗ {}\n", message);
  return 1;
}

capture::PixelSize pictureSize(const std::filesystem::path& movie) {
  const auto reader = media::VideoReader::open(movie);
  if (!reader) return {};
  return {.width = reader->info().width, .height = reader->info().height};
}

}  // namespace

CheckOutcome judgeSmokeRecord(const SmokeEvidence& evidence,
                              const std::vector<RecordedEvent>& events) {
  bool holds = true;
  const auto verdict = [&](bool isGood, std::string_view praise, std::string_view complaint) {
    holds = holds && isGood;
    return isGood ? praise : complaint;
  };
  const auto isMove = [](const auto& event) { return event.type == RecordedEvent::Kind::move; };
  const auto samples = std::ranges::count_if(events, isMove);
  const auto outside = std::ranges::count_if(
      events, [&](const auto& event) { return isMove(event) && isOutside(event); });
  double largest = 0;
  std::string text =
      fmt::format("  画面尺寸  期望 {}×{}  实际 {}×{}  {}\n", evidence.expected.width,
                  evidence.expected.height, evidence.actual.width, evidence.actual.height,
                  verdict(evidence.expected == evidence.actual, "✓", "✗ 范围裁剪没生效"));
  text += fmt::format("  光标采样  {} 个，越界 {} 个  {}\n", samples, outside,
                      verdict(outside == 0, "✓", "✗ 归一化用错了矩形"));
  text += probeLines(evidence.probes, events, largest);
  const bool isMapped = !evidence.probes.empty() && largest <= largestDeviation;
  text +=
      fmt::format("  归一化映射  最大偏差 {:.4f}  {}\n", largest,
                  verdict(isMapped, "✓ 坐标落在正确的范围里", "✗ 映射错了，检查归一化用的矩形"));
  return {std::move(text), holds ? 0 : 1};
}

int smokeRecord(const CommandContext& context) {
  const auto target = context.commandLine.value("--smoke-record").value_or("");
  const auto region = regionArgument(target);
  if (!region) {
    fmt::print(context.out, "{}\n", region.error());
    return 1;
  }
  fmt::print(context.out, "{0}\n 录制范围冒烟测试 · {1}\n{0}\n", motion::ruler(),
             *region ? target : "全屏");
  auto stage = context.makeCaptureStage();
  if (!stage) return failSmoke(context, "启动失败：" + stage.error());
  const auto& geometry = *(*stage)->backends().geometry;
  const auto scope = scopeOf(*region, geometry);
  const auto wanted = capture::screenTarget(scope, framesPerSecond, geometry);
  if (!wanted) return failSmoke(context, "启动失败：" + wanted.error().message);

  SmokeEvidence evidence{.expected = wanted->size, .actual = {}, .probes = {}};
  const auto area = std::get<capture::ScreenRequest::Area>(wanted->subject).rect;
  const auto package = recordRun(**stage, {.order = {.scope = scope},
                                           .limit = limitInSeconds,
                                           .perform = ProbeTour{area, evidence.probes}});
  if (!package) {
    return failSmoke(context, package.error().timedOut ? "超时：录制没有在 20s 内结束"
                                                       : package.error().message);
  }
  const auto project = package::RecordingProject::load(*package, context.now);
  if (!project) return failSmoke(context, "录制包读不出来");
  fmt::print(context.out, "\n  包：{}\n", package->string());
  evidence.actual = pictureSize(*package / "screen.mov");
  for (auto& probe : evidence.probes) probe.leftAt -= project->meta.firstFramePTS.value_or(0);
  const auto outcome = judgeSmokeRecord(evidence, project->events);
  fmt::print(context.out, "{}", outcome.text);
  return outcome.exitCode;
}

}  // namespace vesk::app
