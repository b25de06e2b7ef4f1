#include "motion/HoldWalk.h"

#include <algorithm>
#include <cmath>
#include <optional>

#include "motion/FrameWalk.h"
#include "motion/VisibleRectangle.h"

namespace vesk::motion {
namespace {

/// Seconds for which a new hold may still slide towards the cursor.
constexpr double takeoverSeconds = 0.26;
constexpr double cursorStrength = 0.7;
constexpr double cursorWindow = 0.12;

/// Distance of the cursor from the middle of the box along one axis, in shares of the box; 0 on an
/// axis that does not count.
double offCentre(double cursor, double low, double size) {
  constexpr double smallest = 0.0001;
  if (size > 1 - smallest || size < smallest) {
    return 0;
  }
  return std::abs((cursor - low) / size - 0.5);
}

void measureHold(const DumpCtx& context, const ZoomSegment& segment, HoldMeasure& measure) {
  const double holdStart = segment.start + segment.easeIn;
  const double holdEnd = std::min(std::max(segment.end - segment.easeOut, holdStart), segment.end);
  const double deadzone = std::clamp(segment.deadzone, 0.05, 0.95);
  walk(holdStart, holdEnd, frameStep, [&](double t) {
    const VisibleRectangle box = visibleRectangle(context.track, t, context.camAspect);
    const glm::dvec2 cursor(context.cursorTrack.smoothed(t, cursorStrength, cursorWindow));
    const double off = std::max(offCentre(cursor.x, box.low.x, box.size().x),
                                offCentre(cursor.y, box.low.y, box.size().y));
    ++measure.frames;
    measure.offCentre.offer(off, t);
    if (off > deadzone / 2) {
      ++measure.outsideDeadzone;
    }
    if (off <= 0.5) {
      return;
    }
    if (t - holdStart < takeoverSeconds) {
      ++measure.takeoverFrames;
    } else {
      ++measure.lostFrames;
      measure.lost.offer(off, t);
    }
  });
}

}  // namespace

HoldMeasure measureHolds(const DumpCtx& context) {
  HoldMeasure measure;
  for (const ZoomSegment& segment : context.segs) {
    if (segment.followCursor) {
      measureHold(context, segment, measure);
    }
  }
  return measure;
}

}  // namespace vesk::motion
