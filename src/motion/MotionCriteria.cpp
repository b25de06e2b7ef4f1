#include "motion/MotionCriteria.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <tuple>
#include <utility>

#include "motion/FrameWalk.h"
#include "motion/HoldWalk.h"
#include "motion/Peak.h"
#include "motion/VisibleRectangle.h"

namespace vesk::motion {
namespace {

struct Rule {
  std::string_view name;
  double limit;
};

constexpr std::array<Rule, 10> rules{{
    {"0.5s 内最大缩放变化", 1.3},
    {"最大镜头速度", 0.06},
    {"推镜期视口边缘折返", 3},
    {"推镜/变焦进度偏差", 0.08},
    {"到位后 0.35s 额外位移", 0.03},
    {"手动还原未回整屏", 1.05},
    {"拉回期视口折返", 3},
    {"跟踪期指针跑出视口", 0},
    {"指针离中心最大偏离", 0.48},
    {"最大速度突变", 0.01},
}};

constexpr double shortestReversalSpan = 0.05;
constexpr double shortestProgressSpan = 0.15;

Criterion graded(int number, double value, std::optional<double> at) {
  const Rule& rule = rules.at(static_cast<std::size_t>(number) - 1);
  return {number, rule.name, value, rule.limit, at, !(value > rule.limit), {}};
}

Criterion graded(int number, const Peak& peak) {
  return graded(number, peak.value, peak.at);
}

Criterion zoomChange(const DumpCtx& context) {
  Peak change;
  double before = context.track.sample(0).framing;
  walk(0, context.p.duration(), framingSampleStep, [&](double t) {
    const double framing = context.track.sample(t).framing;
    change.offer(std::abs(framing - before), t);
    before = framing;
  });
  Criterion result = graded(1, change);
  if (!result.pass) {
    result.failure = fmt::format("{:.3f}× > 1.3×", result.value);
  }
  return result;
}

/// Numbers 2 and 10, which share one walk over the whole recording.
std::pair<Criterion, Criterion> speedAndJump(const DumpCtx& context) {
  Peak speed;
  Peak jump;
  std::optional<VisibleRectangle> boxBefore;
  std::optional<double> speedBefore;
  walk(0, context.p.duration(), frameStep, [&](double t) {
    const VisibleRectangle box = visibleRectangle(context.track, t, context.camAspect);
    if (boxBefore) {
      const double current = travel(*boxBefore, box);
      speed.offer(current, t);
      if (speedBefore) {
        jump.offer(std::abs(current - *speedBefore), t);
      }
      speedBefore = current;
    }
    boxBefore = box;
  });
  Criterion fastest = graded(2, speed);
  if (!fastest.pass) {
    fastest.failure = fmt::format("{:.4f} > 0.06 画面/帧 @ {:.2f}s", fastest.value, fastest.when());
  }
  return {fastest, graded(10, jump)};
}

Criterion reversalCriterion(int number, const DumpCtx& context, Span (*spanOf)(const ZoomSegment&),
                            double& largest) {
  Reversals reversals;
  for (const ZoomSegment& segment : context.segs) {
    const Span span = spanOf(segment);
    if (span.length() > shortestReversalSpan) {
      countReversals(context.track, context.camAspect, span, reversals);
    }
  }
  largest = reversals.largest.value;
  Criterion result = graded(number, reversals.count, reversals.largest.at);
  if (!result.pass) {
    result.failure =
        fmt::format("{} 次 > 3，最大 {:.4f} @ {:.2f}s", reversals.count, largest, result.when());
  }
  return result;
}

Criterion progressDeviation(const DumpCtx& context, std::optional<EaseDetail>& worst) {
  Peak deviation;
  for (const ZoomSegment& segment : context.segs) {
    const Span span = easeInSpan(segment);
    if (!(span.length() > shortestProgressSpan)) {
      continue;
    }
    EaseDetail detail = measureEase(context.track, context.camAspect, span);
    if (detail.frames.empty()) {
      continue;
    }
    const EaseFrame& frame = detail.frames[detail.worst];
    if (frame.deviation() > deviation.value) {
      deviation.offer(frame.deviation(), frame.t);
      worst = std::move(detail);
    }
  }
  Criterion result = graded(4, deviation);
  if (!result.pass) {
    result.failure = fmt::format("{:.3f} > 0.08 @ {:.2f}s", result.value, result.when());
  }
  return result;
}

Criterion settling(const DumpCtx& context) {
  constexpr double watched = 0.35;
  Peak drift;
  for (const ZoomSegment& segment : context.segs) {
    const double framed = segment.start + segment.easeIn;
    if (!segment.followCursor || !(segment.end - framed > 0.3)) {
      continue;
    }
    const double from = framed - 0.02;
    const glm::vec2 origin = visibleRectangle(context.track, from, context.camAspect).low;
    walk(from, from + watched, frameStep, [&](double t) {
      drift.offer(distance(origin, visibleRectangle(context.track, t, context.camAspect).low), t);
    });
  }
  Criterion result = graded(5, drift);
  if (!result.pass) {
    result.failure = fmt::format("{:.4f} > 0.03 @ {:.2f}s", result.value, result.when());
  }
  return result;
}

Criterion homecoming(const DumpCtx& context, int& resets, int& incomplete) {
  Peak framing;
  for (const ZoomSegment& segment : context.segs) {
    if (!segment.endsWithExplicitReset) {
      continue;
    }
    const double t = std::min(segment.end, context.p.duration());
    const double reached = context.track.sample(t).framing;
    ++resets;
    incomplete += reached > rules[5].limit ? 1 : 0;
    framing.offer(reached, t);
  }
  Criterion result = graded(6, resets > 0 ? framing.value : 1, framing.at);
  if (!result.pass) {
    result.failure =
        fmt::format("{} 个，最差仍在 {:.2f}× @ {:.2f}s", incomplete, result.value, result.when());
  }
  return result;
}

Criterion lostCursor(const HoldMeasure& holds) {
  Criterion result = graded(8, holds.lostFrames, holds.lost.at);
  if (!result.pass) {
    result.failure = fmt::format("{} 帧", holds.lostFrames);
  }
  return result;
}

Criterion offCentre(const HoldMeasure& holds) {
  Criterion result = graded(9, holds.offCentre);
  if (!result.pass) {
    result.failure = fmt::format("{:.3f} > 0.48 @ {:.2f}s", result.value, result.when());
  }
  return result;
}

}  // namespace

MotionCriteria measureCriteria(const DumpCtx& context) {
  MotionCriteria measured;
  auto& [first, second, third, fourth, fifth, sixth, seventh, eighth, ninth, tenth] =
      measured.criteria;
  first = zoomChange(context);
  std::tie(second, tenth) = speedAndJump(context);
  third = reversalCriterion(3, context, easeInSpan, measured.largestEaseInReversal);
  fourth = progressDeviation(context, measured.worstEaseIn);
  fifth = settling(context);
  sixth = homecoming(context, measured.explicitResets, measured.incompleteResets);
  seventh = reversalCriterion(7, context, easeOutSpan, measured.largestEaseOutReversal);

  const HoldMeasure holds = measureHolds(context);
  eighth = lostCursor(holds);
  ninth = offCentre(holds);
  measured.takeoverFrames = holds.takeoverFrames;
  if (holds.frames > 0) {
    measured.movingShare = static_cast<double>(holds.outsideDeadzone) / holds.frames;
  }
  return measured;
}

std::vector<std::string> failures(const DumpCtx& context, const MotionCriteria& measured) {
  std::vector<std::string> texts;
  if (context.segs.empty()) {
    texts.emplace_back("基准包没有产出任何效果段");
  }
  for (const Criterion& criterion : measured.criteria) {
    if (!criterion.failure.empty()) {
      texts.push_back(criterion.failure);
    }
  }
  return texts;
}

}  // namespace vesk::motion
