#include <algorithm>
#include <cmath>
#include <limits>
#include <string>

#include "motion/PlainRules.h"

namespace vesk::motion::plain {
namespace {

using package::RecordedEvent;

bool switchesApplication(const package::RecordingProject& project, double t) {
  return std::ranges::any_of(project.appChanges, [t](const RecordedEvent& change) {
    return change.t >= t - 0.05 && change.t <= t + 0.6;
  });
}

std::vector<RecordedEvent> selected(const package::RecordingProject& project, double silence) {
  std::vector<RecordedEvent> kept;
  const auto& clicks = project.clicks;
  for (std::size_t i = 0; i < clicks.size(); ++i) {
    double gapBefore = std::numeric_limits<double>::infinity();
    double gapAfter = std::numeric_limits<double>::infinity();
    if (i > 0) {
      gapBefore = clicks[i].t - clicks[i - 1].t;
    }
    if (i + 1 < clicks.size()) {
      gapAfter = clicks[i + 1].t - clicks[i].t;
    }
    if (i > 0 && gapBefore < 0.4) {
      continue;
    }
    if (switchesApplication(project, clicks[i].t) || gapBefore >= silence || gapAfter < 0.4) {
      kept.push_back(clicks[i]);
    }
  }
  return kept;
}

void setTimes(ZoomSegment& segment) {
  const double scale = (segment.level - 1) * 0.25 + 1;
  segment.easeIn = 0.45 * scale;
  segment.easeOut = 0.55 * scale;
}

}  // namespace

std::vector<ZoomSegment> inferAutoSegments(const package::RecordingProject& project,
                                           Sensitivity sensitivity) {
  std::vector<std::vector<RecordedEvent>> groups;
  for (const RecordedEvent& click : selected(project, silenceThreshold(sensitivity))) {
    if (!groups.empty() && click.t - groups.back().back().t < clusterGap(sensitivity)) {
      groups.back().push_back(click);
    } else {
      groups.push_back({click});
    }
  }

  std::vector<ZoomSegment> output;
  for (std::size_t g = 0; g < groups.size(); ++g) {
    bool any = false;
    float minX = 0;
    float maxX = 0;
    float minY = 0;
    float maxY = 0;
    for (const RecordedEvent& click : groups[g]) {
      if (!click.x || !click.y) {
        continue;
      }
      const auto x = static_cast<float>(*click.x);
      const auto y = static_cast<float>(*click.y);
      minX = any ? std::min(minX, x) : x;
      maxX = any ? std::max(maxX, x) : x;
      minY = any ? std::min(minY, y) : y;
      maxY = any ? std::max(maxY, y) : y;
      any = true;
    }
    if (!any) {
      continue;
    }
    const double extent = std::max(maxX - minX, maxY - minY);
    ZoomSegment s;
    s.level = extent < 0.05 ? 2.0 : std::min(std::max(0.55 / extent, 1.4), 3.2);
    s.focus = {(minX + maxX) * 0.5F, (minY + maxY) * 0.5F};
    setTimes(s);
    const double first = groups[g].front().t;
    const double last = groups[g].back().t;
    s.start = first - 0.35 < 0 ? 0 : first - 0.35;
    s.end = last + 0.8 + s.easeOut;
    if (s.end - s.start < s.easeIn + 0.8 + s.easeOut) {
      s.end = s.start + s.easeIn + 0.8 + s.easeOut;
    }
    s.end = std::min(s.end, project.duration());
    s.sourceClickTime = first;
    s.id = "auto_" + std::to_string(g) + "_" + std::to_string(static_cast<long long>(first * 1000));
    if (!(s.end - s.start > 0.3)) {
      continue;
    }
    if (!output.empty() && s.start < output.back().end) {
      ZoomSegment& before = output.back();
      before.end = std::max(before.end, s.end);
      before.focus = {(before.focus.x + s.focus.x) * 0.5F, (before.focus.y + s.focus.y) * 0.5F};
      before.level = std::min(before.level, s.level);
      setTimes(before);
    } else {
      output.push_back(s);
    }
  }

  std::vector<ZoomSegment> kept;
  for (const ZoomSegment& s : output) {
    if (s.end - s.start > 0.25) {
      kept.push_back(s);
    }
  }
  return kept;
}

std::vector<ZoomSegment> pairManualMarks(const package::RecordingProject& project) {
  std::vector<RecordedEvent> marks;
  for (const RecordedEvent& event : project.events) {
    if (event.type == RecordedEvent::Kind::zoomIn || event.type == RecordedEvent::Kind::zoomOut) {
      marks.push_back(event);
    }
  }
  std::ranges::stable_sort(marks, {}, &RecordedEvent::t);

  std::vector<ZoomSegment> segments;
  bool open = false;
  for (const RecordedEvent& mark : marks) {
    const glm::vec2 position{static_cast<float>(mark.x.value_or(0.5)),
                             static_cast<float>(mark.y.value_or(0.5))};
    if (mark.type == RecordedEvent::Kind::zoomIn && !open) {
      ZoomSegment s;
      s.id = "man_" + std::to_string(static_cast<long long>(mark.t * 1000));
      s.start = mark.t - 0.15 < 0 ? 0 : mark.t - 0.15;
      s.end = mark.t + 1.2;
      s.sourceClickTime = mark.t;
      s.level = 2.0;
      s.focus = position;
      s.isManual = true;
      s.easeIn = 0.45;
      s.easeOut = 0.55;
      segments.push_back(s);
      open = true;
    } else if (mark.type == RecordedEvent::Kind::zoomIn) {
      ZoomSegment& s = segments.back();
      if (mark.t < s.start + s.easeIn) {
        s.focus = position;
      } else {
        s.waypoints.push_back({.t = mark.t, .focus = position});
      }
      s.end = std::max(s.end, mark.t + s.panDuration + 0.6);
    } else if (open) {
      segments.back().end = mark.t + segments.back().easeOut;
      segments.back().endsWithExplicitReset = true;
      open = false;
    }
  }
  if (open) {
    segments.back().end = project.duration();
  }

  for (std::size_t i = 0; i < segments.size(); ++i) {
    ZoomSegment& s = segments[i];
    const double need = s.easeIn + s.holdMin + s.easeOut;
    if (s.end - s.start >= need) {
      continue;
    }
    s.end = std::min(s.start + need, project.duration());
    if (i + 1 < segments.size()) {
      s.end = std::min(s.end, segments[i + 1].start);
    }
  }
  for (std::size_t i = 0; i + 1 < segments.size(); ++i) {
    segments[i].end = std::min(segments[i].end, segments[i + 1].start);
  }
  std::vector<ZoomSegment> kept;
  for (const ZoomSegment& s : segments) {
    if (s.end - s.start > 0.2) {
      kept.push_back(s);
    }
  }
  return kept;
}

std::vector<ZoomSegment> combinedSegments(const package::RecordingProject& project,
                                          Sensitivity sensitivity, bool useAutoDetection) {
  std::vector<ZoomSegment> all = pairManualMarks(project);
  if (!useAutoDetection) {
    return all;
  }
  const std::vector<ZoomSegment> manual = all;
  for (const ZoomSegment& s : inferAutoSegments(project, sensitivity)) {
    bool overlaps = false;
    for (const ZoomSegment& m : manual) {
      overlaps = overlaps || (s.end > m.start && m.end > s.start);
    }
    if (!overlaps) {
      all.push_back(s);
    }
  }
  std::ranges::stable_sort(all, {}, &ZoomSegment::start);
  return all;
}

}  // namespace vesk::motion::plain
