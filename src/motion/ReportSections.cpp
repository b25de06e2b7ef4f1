#include "motion/ReportSections.h"

#include <algorithm>
#include <cstddef>
#include <filesystem>
#include <string_view>
#include <vector>

#include "motion/FrameWalk.h"
#include "motion/KeyframePass.h"
#include "motion/ReportText.h"
#include "motion/VisibleRectangle.h"

namespace vesk::motion {
namespace {

using package::RecordedEvent;

/// The package's directory name, also when its path ends with a slash.
std::string nameOf(const std::filesystem::path& url) {
  return (url.has_filename() ? url : url.parent_path()).filename().string();
}

/// How the camera gets from one segment to the next.
std::string relation(const ZoomSegment& before, const ZoomSegment& segment) {
  const double gap = segment.start - before.end;
  if (before.endsWithExplicitReset) {
    return "手动还原→归位";
  }
  if (areJoined(before, segment)) {
    return fmt::format("连续(间隔{:.2f}s)", gap);
  }
  if (gap >= joinGap) {
    return fmt::format("归位(间隔{:.2f}s)", gap);
  }
  return fmt::format("强制归位(相距{:.2f})", distance(before.focus, segment.focus));
}

std::string_view side(double yaw) {
  if (yaw > 0.5) {
    return "右侧拍";
  }
  return yaw < -0.5 ? "左侧拍" : "正面";
}

/// A point that the camera is sent to.
struct Mark {
  double t = 0;
  glm::vec2 point{};
  std::string_view kind;
};

std::vector<Mark> marksOf(const ZoomSegment& segment) {
  std::vector<Mark> marks{{segment.start + segment.easeIn, segment.focus, "推近"}};
  for (const ZoomSegment::Waypoint& waypoint : segment.waypoints) {
    marks.push_back({waypoint.t, waypoint.focus, "平移"});
  }
  std::ranges::stable_sort(marks, {}, &Mark::t);
  return marks;
}

std::string bar(double progress) {
  constexpr double full = 46;
  const int length = static_cast<int>(std::clamp(full * progress, 0.0, full));
  std::string text;
  for (int i = 0; i < length; ++i) {
    text += "█";
  }
  return text;
}

}  // namespace

std::string summarySection(const DumpCtx& context) {
  const package::RecordingProject& p = context.p;
  const auto count = [&](RecordedEvent::Kind kind) {
    return std::ranges::count(p.events, kind, &RecordedEvent::type);
  };
  std::string text;
  append(text, "{}\n 运镜报告  {}\n", context.line, nameOf(p.url));
  append(text, "  {}×{} @ {}fps   时长 {:.2f}s   scale {:.1f}\n", p.meta.captureWidth,
         p.meta.captureHeight, p.meta.fps, p.duration(), p.meta.scaleFactor);
  append(text, "  事件 {}   点击 {}   按键 {}   窗口切换 {}   断流 {}\n", p.events.size(),
         p.clicks.size(), p.keys.size(), p.appChanges.size(), p.gaps.size());
  const auto zoomIns = count(RecordedEvent::Kind::zoomIn);
  const auto zoomOuts = count(RecordedEvent::Kind::zoomOut);
  if (zoomIns + zoomOuts > 0) {
    append(text, "  手动镜头标记  放大 {}   还原 {}\n", zoomIns, zoomOuts);
  }
  return text;
}

std::string levelSection(const DumpCtx& context) {
  std::string text = "\n▸ 智能分级（三档对比）\n";
  append(text, "  {} {} {} {}\n", padded("档位", 6), padded("段数", 6), padded("覆盖率", 8),
         padded("静默阈值", 10));
  for (const LevelResult& level : context.levels) {
    append(text, "  {} {:<8} {} {}{}\n", padded(rawValue(level.sensitivity), 8),
           level.segments.size(), padded(fmt::format("{:.0f}%", level.coverage * 100), 10),
           padded(fmt::format("{:.1f}s", silenceThreshold(level.sensitivity)), 10),
           level.coverage > densityLimit ? "  ← 过密" : "");
  }
  return text;
}

std::string segmentSection(const DumpCtx& context) {
  std::string text =
      "\n▸ 标准档段详情\n"
      "  #   起止              时长    倍数   焦点            与上段\n";
  for (std::size_t i = 0; i < context.segs.size(); ++i) {
    const ZoomSegment& segment = context.segs[i];
    append(text, "  {:<3} {:6.2f}→{:<6.2f}  {:5.2f}s  {:.2f}×  ({:.3f},{:.3f})  {} {}\n", i + 1,
           segment.start, segment.end, segment.end - segment.start, segment.level, segment.focus.x,
           segment.focus.y, segment.isManual ? "[手动]" : "[自动]",
           i == 0 ? "" : relation(context.segs[i - 1], segment));
  }
  if (context.segs.empty()) {
    text +=
        "\n  标准档没有产出效果段——点击太少或太分散。\n"
        "  ✗ 基准包没有产出任何效果段\n";
  }
  return text;
}

std::string positionSection(const DumpCtx& context) {
  std::string text =
      "\n▸ 标记点 → 机位（yaw 正 = 相机在右侧）\n"
      "  段  时刻      标记点位置        方位角     机位\n";
  for (std::size_t i = 0; i < context.segs.size(); ++i) {
    for (const Mark& mark : marksOf(context.segs[i])) {
      const double yaw = yawToward(mark.point, context.camera3D.yaw);
      append(text, "  {:<3} {:6.2f}s  {} ({:.3f},{:.3f})  {:+6.2f}°   {}\n", i + 1, mark.t,
             mark.kind, mark.point.x, mark.point.y, yaw, side(yaw));
    }
  }
  return text;
}

std::string curveSection(const DumpCtx& context) {
  return fmt::format("\n▸ 过渡曲线：{} —— {}\n", rawValue(context.ease), helpLine(context.ease));
}

std::string profileSection(const DumpCtx& context) {
  const ZoomSegment& segment = context.segs.front();
  const double framed = segment.start + segment.easeIn;
  std::string text;
  append(text, "\n▸ 推镜曲线剖面（{}）  {:.2f}→{:.2f}s\n", rawValue(context.ease), segment.start,
         framed);
  walk(segment.start, framed + 1e-6, 0.05, [&](double t) {
    const double framing = context.track.sample(t).framing;
    const double progress = segment.level > 1 ? (framing - 1) / (segment.level - 1) : 0;
    append(text, "  {:+5.0f}ms  {:.3f}×  {:5.1f}%  {}\n", (t - segment.start) * 1000, framing,
           progress * 100, bar(progress));
  });
  return text;
}

std::string framingSection(const DumpCtx& context, const MotionCriteria& measured) {
  std::string text = "\n▸ 相机轨道（每 0.5s 采样，zoom / center）\n";
  int column = 0;
  walk(0, context.p.duration(), framingSampleStep, [&](double t) {
    append(text, "{}{:5.1f}s:{:.2f}× {}", column == 0 ? "  " : "", t,
           context.track.sample(t).framing, column == 3 ? "\n" : "");
    column = (column + 1) % 4;
  });
  if (column != 0) {
    text += "\n";
  }
  const Criterion& change = measured.criterion(1);
  append(text, "\n  0.5s 内最大缩放变化 {:.3f}×  {}\n", change.value,
         change.pass ? "" : "← 偏猛，考虑加长 easeIn/easeOut");
  return text;
}

}  // namespace vesk::motion
