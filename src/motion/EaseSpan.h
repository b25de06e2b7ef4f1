#pragma once

#include <cstddef>
#include <vector>

#include "motion/CameraTrack.h"
#include "motion/Peak.h"
#include "motion/VisibleRectangle.h"
#include "motion/ZoomSegment.h"

// Measures over the spans in which the camera moves in or out.
namespace vesk::motion {

/// A stretch of time in seconds, both ends included.
struct Span {
  double first = 0;
  double last = 0;
  double length() const { return last - first; }
};

/// From the segment's start until it is framed.
Span easeInSpan(const ZoomSegment& segment);
/// From when the camera leaves until the segment's end.
Span easeOutSpan(const ZoomSegment& segment);

/// Times when an edge of the box turned back, over all four edges.
struct Reversals {
  int count = 0;
  Peak largest;  ///< size of the change that went back
};

/// Adds the reversals of a span: changes from one frame to the next of opposite sign to the change
/// just before, both above 0.0001 in size.
void countReversals(const CameraTrack& track, double aspect, Span span, Reversals& reversals);

/// One frame of a push-in. Progress runs from 0 at the first frame to 1 at the last.
struct EaseFrame {
  double t = 0;
  VisibleRectangle box;
  double sizeProgress = 0;    ///< of the box's width
  double originProgress = 0;  ///< of the box's top left corner, as a distance
  double deviation() const;
};

/// The frames of a push-in and the one where size and origin are least in step.
struct EaseDetail {
  Span span;
  std::vector<EaseFrame> frames;
  std::size_t worst = 0;
};

/// Nothing to measure, and no frames, when the box hardly changes size or hardly moves.
EaseDetail measureEase(const CameraTrack& track, double aspect, Span span);

}  // namespace vesk::motion
