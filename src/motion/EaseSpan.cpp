#include "motion/EaseSpan.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "motion/FrameWalk.h"

namespace vesk::motion {
namespace {

constexpr double smallestChange = 0.0001;
constexpr double smallestResize = 0.001;
constexpr double smallestMove = 0.02;

using Edges = std::array<double, 4>;

Edges edgesOf(const VisibleRectangle& box) {
  return {box.low.x, box.low.y, box.high.x, box.high.y};
}

bool turnsBack(double change, double before) {
  return std::abs(change) > smallestChange && std::abs(before) > smallestChange &&
         (change > 0) != (before > 0);
}

}  // namespace

Span easeInSpan(const ZoomSegment& segment) {
  return {segment.start, std::min(segment.end, segment.start + segment.easeIn)};
}

Span easeOutSpan(const ZoomSegment& segment) {
  return {std::max(segment.end - segment.easeOut, segment.start), segment.end};
}

void countReversals(const CameraTrack& track, double aspect, Span span, Reversals& reversals) {
  Edges edges = edgesOf(visibleRectangle(track, span.first, aspect));
  Edges changes{};  // none before the first frame, so the first change turns nothing back
  walk(span.first, span.last, frameStep, [&](double t) {
    const Edges current = edgesOf(visibleRectangle(track, t, aspect));
    for (std::size_t i = 0; i < current.size(); ++i) {
      const double change = current[i] - edges[i];
      if (turnsBack(change, changes[i])) {
        ++reversals.count;
        reversals.largest.offer(std::abs(change), t);
      }
      changes[i] = change;
    }
    edges = current;
  });
}

double EaseFrame::deviation() const {
  return std::abs(sizeProgress - originProgress);
}

EaseDetail measureEase(const CameraTrack& track, double aspect, Span span) {
  EaseDetail detail{span, {}, 0};
  walk(span.first, span.last, frameStep,
       [&](double t) { detail.frames.push_back({t, visibleRectangle(track, t, aspect), 0, 0}); });
  if (detail.frames.empty()) {
    return detail;
  }
  const VisibleRectangle first = detail.frames.front().box;
  const VisibleRectangle last = detail.frames.back().box;
  const double resize = last.size().x - first.size().x;
  const double move = distance(first.low, last.low);
  if (std::abs(resize) <= smallestResize || move <= smallestMove) {
    return {span, {}, 0};
  }
  for (EaseFrame& frame : detail.frames) {
    // Adding 0 makes the 0 of a shrinking box positive.
    frame.sizeProgress = (frame.box.size().x - first.size().x) / resize + 0.0;
    frame.originProgress = distance(first.low, frame.box.low) / move;
  }
  const auto worst = std::ranges::max_element(detail.frames, {}, &EaseFrame::deviation);
  detail.worst = static_cast<std::size_t>(worst - detail.frames.begin());
  return detail;
}

}  // namespace vesk::motion
