#include "app/PairingCheck.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "motion/ManualMarks.h"
#include "package/RecordingProject.h"
#include "package/SyntheticPackage.h"

namespace vesk::app {
namespace {

using motion::ZoomSegment;
using package::SyntheticMark;

constexpr auto zoomIn = package::RecordedEvent::Kind::zoomIn;
constexpr auto zoomOut = package::RecordedEvent::Kind::zoomOut;
constexpr double pairingTakeLength = 12;
constexpr double placeTolerance = 0.005;

struct Range {
  double low;
  double high;
  bool contains(double value) const { return low <= value && value <= high; }
};

struct ExpectedSegment {
  Range start;
  Range end;
  glm::dvec2 focus;
  std::vector<ZoomSegment::Waypoint> waypoints;
};

struct PairingCase {
  std::string_view name;
  std::vector<SyntheticMark> marks;
  std::vector<ExpectedSegment> segments;
};

std::vector<PairingCase> pairingCases() {
  return {
      {"正常配对",
       {{2.0, zoomIn, 0.3, 0.3}, {6.0, zoomOut, 0.3, 0.3}},
       {{{1.84, 1.86}, {6.54, 6.56}, {0.3, 0.3}, {}}}},
      {"连续放大（应平移而非新建段）",
       {{2.0, zoomIn, 0.2, 0.2}, {5.0, zoomIn, 0.8, 0.7}, {8.0, zoomOut, 0.8, 0.7}},
       {{{1.84, 1.86}, {8.54, 8.56}, {0.2, 0.2}, {{5.0, {0.8F, 0.7F}}}}}},
      {"推镜途中改主意（不该记成平移）",
       {{2.0, zoomIn, 0.2, 0.2}, {2.2, zoomIn, 0.8, 0.7}, {6.0, zoomOut, 0.8, 0.7}},
       {{{1.84, 1.86}, {6.54, 6.56}, {0.8, 0.7}, {}}}},
      {"忘按还原键", {{3.0, zoomIn, 0.5, 0.5}}, {{{2.84, 2.86}, {11.99, 12.01}, {0.5, 0.5}, {}}}},
      {"孤立还原键（应忽略）",
       {{1.0, zoomOut, 0.5, 0.5}, {4.0, zoomIn, 0.6, 0.4}, {7.0, zoomOut, 0.6, 0.4}},
       {{{3.84, 3.86}, {7.54, 7.56}, {0.6, 0.4}, {}}}},
      {"还原后立刻再放大（不得重叠）",
       {{2.0, zoomIn, 0.2, 0.2}, {2.5, zoomOut, 0.2, 0.2}, {3.0, zoomIn, 0.7, 0.7}},
       {{{1.84, 1.86}, {2.84, 2.86}, {0.2, 0.2}, {}},
        {{2.84, 2.86}, {11.99, 12.01}, {0.7, 0.7}, {}}}},
      {"还原后 0.1s 再放大（生来就重叠）",
       {{2.0, zoomIn, 0.2, 0.2}, {2.5, zoomOut, 0.2, 0.2}, {2.6, zoomIn, 0.7, 0.7}},
       {{{1.84, 1.86}, {2.44, 2.46}, {0.2, 0.2}, {}},
        {{2.44, 2.46}, {11.99, 12.01}, {0.7, 0.7}, {}}}},
      {"两段独立",
       {{1.5, zoomIn, 0.2, 0.2},
        {4.0, zoomOut, 0.2, 0.2},
        {7.0, zoomIn, 0.7, 0.7},
        {10.0, zoomOut, 0.7, 0.7}},
       {{{1.34, 1.36}, {4.54, 4.56}, {0.2, 0.2}, {}},
        {{6.84, 6.86}, {10.54, 10.56}, {0.7, 0.7}, {}}}},
  };
}

bool near(double a, double b) {
  return std::abs(a - b) <= placeTolerance;
}
bool near(glm::dvec2 a, glm::dvec2 b) {
  return near(a.x, b.x) && near(a.y, b.y);
}

/// @param number from 1.
void compareSegment(const ExpectedSegment& expected, const ZoomSegment& actual, std::size_t number,
                    std::vector<std::string>& failures) {
  if (!expected.start.contains(actual.start)) {
    failures.push_back(fmt::format("段{} 起点 期望 {:.2f}…{:.2f}，实际 {:.3f}", number,
                                   expected.start.low, expected.start.high, actual.start));
  }
  if (!expected.end.contains(actual.end)) {
    failures.push_back(fmt::format("段{} 终点 期望 {:.2f}…{:.2f}，实际 {:.3f}", number,
                                   expected.end.low, expected.end.high, actual.end));
  }
  if (!near(expected.focus, actual.focus)) {
    failures.push_back(fmt::format("段{} 焦点 期望 ({:.2f},{:.2f})，实际 ({:.3f},{:.3f})", number,
                                   expected.focus.x, expected.focus.y, actual.focus.x,
                                   actual.focus.y));
  }
  if (expected.waypoints.size() != actual.waypoints.size()) {
    failures.push_back(fmt::format("段{} 路点数 期望 {}，实际 {}", number,
                                   expected.waypoints.size(), actual.waypoints.size()));
    return;
  }
  for (std::size_t i = 0; i < actual.waypoints.size(); ++i) {
    const ZoomSegment::Waypoint& wanted = expected.waypoints[i];
    const ZoomSegment::Waypoint& found = actual.waypoints[i];
    if (!near(wanted.t, found.t) || !near(wanted.focus, found.focus)) {
      failures.push_back(fmt::format(
          "段{} 路点{} 期望 {:.2f}s({:.2f},{:.2f})，实际 {:.3f}s({:.3f},{:.3f})", number, i + 1,
          wanted.t, wanted.focus.x, wanted.focus.y, found.t, found.focus.x, found.focus.y));
    }
  }
}

void findOverlaps(const std::vector<ZoomSegment>& segments, std::vector<std::string>& failures) {
  for (std::size_t i = 1; i < segments.size(); ++i) {
    const ZoomSegment& a = segments[i - 1];
    const ZoomSegment& b = segments[i];
    if (b.start < a.end) {
      failures.push_back(fmt::format("段重叠 {:.2f}…{:.2f} 与 {:.2f}…{:.2f} 重了 {:.2f}s", a.start,
                                     a.end, b.start, b.end, a.end - b.start));
    }
  }
}

std::vector<std::string> runCase(const PairingCase& pairing, package::Timestamp now) {
  const auto url = package::makeSyntheticPackage(pairing.marks, pairingTakeLength, now);
  if (!url) {
    return {"无法创建合成包"};
  }
  const auto project = package::RecordingProject::load(*url, now);
  if (!project) {
    return {"读取失败：" + project.error().message};
  }
  const std::vector<ZoomSegment> segments = motion::pairManualMarks(*project);
  std::vector<std::string> failures;
  if (segments.size() != pairing.segments.size()) {
    failures.push_back(
        fmt::format("段数 期望 {}，实际 {}", pairing.segments.size(), segments.size()));
  }
  for (std::size_t i = 0; i < std::min(segments.size(), pairing.segments.size()); ++i) {
    compareSegment(pairing.segments[i], segments[i], i + 1, failures);
  }
  findOverlaps(segments, failures);
  return failures;
}

}  // namespace

CheckOutcome checkPairing(package::Timestamp now) {
  SelfCheck check(" 手动标记配对自检");
  for (const PairingCase& pairing : pairingCases()) {
    check.step(pairing.name, runCase(pairing, now));
  }
  return check.finish(fmt::format("{}/{} 个用例通过", check.passed(), check.steps()));
}

}  // namespace vesk::app
