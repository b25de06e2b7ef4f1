#include "motion/ManualMarks.h"

#include <algorithm>

#include "motion/PicturePoint.h"
#include "motion/SegmentId.h"

namespace vesk::motion {
namespace {

using package::RecordedEvent;

constexpr double markLeadIn = 0.15;
constexpr double holdAfterPan = 0.6;

glm::vec2 position(const RecordedEvent& mark) {
  return picturePoint(mark.x.value_or(0.5), mark.y.value_or(0.5));
}

ZoomSegment opened(const RecordedEvent& mark) {
  ZoomSegment segment;
  segment.id = "man_" + wholeMilliseconds(mark.t);
  segment.start = std::max(mark.t - markLeadIn, 0.0);
  segment.end = mark.t + 1.2;
  segment.sourceClickTime = mark.t;
  segment.focus = position(mark);
  segment.isManual = true;
  return segment;
}

/// A second zoom-in: while the camera is still on its way the user has changed their mind, later
/// it is a pan.
void redirect(ZoomSegment& open, const RecordedEvent& mark) {
  if (mark.t < open.start + open.easeIn) {
    open.focus = position(mark);
  } else {
    open.waypoints.push_back({.t = mark.t, .focus = position(mark)});
  }
  open.end = std::max(open.end, mark.t + open.panDuration + holdAfterPan);
}

/// The segments as the marks ask for them, one open at a time; they may be too short or overlap.
std::vector<ZoomSegment> paired(const package::RecordingProject& project) {
  std::vector<ZoomSegment> segments;
  bool isOpen = false;
  for (const RecordedEvent& event : project.events) {
    if (event.type == RecordedEvent::Kind::zoomIn) {
      if (isOpen) {
        redirect(segments.back(), event);
      } else {
        segments.push_back(opened(event));
        isOpen = true;
      }
    } else if (event.type == RecordedEvent::Kind::zoomOut && isOpen) {
      segments.back().end = event.t + segments.back().easeOut;
      segments.back().endsWithExplicitReset = true;
      isOpen = false;
    }
  }
  if (isOpen) {
    segments.back().end = project.duration();
  }
  return segments;
}

/// Lengthens what is too short to be seen, as far as the next segment and the take leave room.
void makeRoom(std::vector<ZoomSegment>& segments, double duration) {
  for (std::size_t i = 0; i < segments.size(); ++i) {
    ZoomSegment& segment = segments[i];
    const double need = segment.easeIn + segment.holdMin + segment.easeOut;
    if (segment.end - segment.start >= need) {
      continue;
    }
    const double limit = i + 1 < segments.size() ? segments[i + 1].start : duration;
    segment.end = std::min({segment.start + need, duration, limit});
  }
}

void cutOverlaps(std::vector<ZoomSegment>& segments) {
  for (std::size_t i = 1; i < segments.size(); ++i) {
    segments[i - 1].end = std::min(segments[i - 1].end, segments[i].start);
  }
}

}  // namespace

std::vector<ZoomSegment> pairManualMarks(const package::RecordingProject& project) {
  std::vector<ZoomSegment> segments = paired(project);
  makeRoom(segments, project.duration());
  cutOverlaps(segments);
  std::erase_if(segments,
                [](const ZoomSegment& segment) { return !(segment.end - segment.start > 0.2); });
  return segments;
}

}  // namespace vesk::motion
