#include "motion/SmartZoom.h"

#include <algorithm>
#include <glm/common.hpp>
#include <iterator>
#include <limits>
#include <optional>
#include <span>
#include <utility>

#include "motion/ManualMarks.h"
#include "motion/PicturePoint.h"
#include "motion/SegmentId.h"

namespace vesk::motion {
namespace {

using package::RecordedEvent;
using package::RecordingProject;
using Click = const RecordedEvent*;

constexpr double burstGap = 0.4;
constexpr double clickLeadIn = 0.35;
constexpr double hold = 0.8;

/// Tells of clicks, asked in time order, whether an application came to the front around them.
class ApplicationSwitches {
 public:
  explicit ApplicationSwitches(std::span<const RecordedEvent> changes) : changes_(changes) {}

  bool isNear(double clickTime) {
    while (!changes_.empty() && changes_.front().t < clickTime - 0.05) {
      changes_ = changes_.subspan(1);
    }
    return !changes_.empty() && changes_.front().t <= clickTime + 0.6;
  }

 private:
  std::span<const RecordedEvent> changes_;
};

/// The clicks that mean something: not the tail of a burst, and either after silence, at the head
/// of a burst, or switching the application.
std::vector<Click> meaningfulClicks(const RecordingProject& project, double silence) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  const std::vector<RecordedEvent>& clicks = project.clicks;
  ApplicationSwitches switches(project.appChanges);
  std::vector<Click> kept;
  for (std::size_t i = 0; i < clicks.size(); ++i) {
    const double t = clicks[i].t;
    const double gapBefore = i > 0 ? t - clicks[i - 1].t : infinity;
    const double gapAfter = i + 1 < clicks.size() ? clicks[i + 1].t - t : infinity;
    if (gapBefore < burstGap) {
      continue;
    }
    if (switches.isNear(t) || gapBefore >= silence || gapAfter < burstGap) {
      kept.push_back(&clicks[i]);
    }
  }
  return kept;
}

/// Cuts the clicks into runs whose neighbours lie closer together than `gap`.
std::vector<std::span<const Click>> clusters(std::span<const Click> clicks, double gap) {
  std::vector<std::span<const Click>> groups;
  while (!clicks.empty()) {
    const auto apart = [gap](Click a, Click b) { return b->t - a->t >= gap; };
    const auto lastOfGroup = std::ranges::adjacent_find(clicks, apart);
    const auto size = lastOfGroup == clicks.end()
                          ? clicks.size()
                          : static_cast<std::size_t>(lastOfGroup - clicks.begin()) + 1;
    groups.push_back(clicks.first(size));
    clicks = clicks.subspan(size);
  }
  return groups;
}

struct Box {
  glm::vec2 min{0.5F, 0.5F};
  glm::vec2 max{0.5F, 0.5F};
};

/// The box around the clicks that have a position.
std::optional<Box> boundingBox(std::span<const Click> group) {
  std::optional<Box> box;
  for (const Click click : group) {
    if (!click->x || !click->y) {
      continue;
    }
    const glm::vec2 point = picturePoint(*click->x, *click->y);
    box = box ? Box{glm::min(box->min, point), glm::max(box->max, point)} : Box{point, point};
  }
  return box;
}

/// A tight spot gets a fixed zoom, anything larger the one that fits it into 55 % of the viewport.
double levelFor(const Box& box) {
  const glm::vec2 size = box.max - box.min;
  const double extent = std::max(size.x, size.y);
  return extent < 0.05 ? 2.0 : std::clamp(0.55 / extent, 1.4, 3.2);
}

/// A deeper zoom travels further and takes longer.
void setLevel(ZoomSegment& segment, double level) {
  const double scale = (level - 1) * 0.25 + 1;
  segment.level = level;
  segment.easeIn = 0.45 * scale;
  segment.easeOut = 0.55 * scale;
}

/// @param number the group's place among all groups.
std::optional<ZoomSegment> candidate(std::span<const Click> group, std::size_t number,
                                     double duration) {
  const std::optional<Box> box = boundingBox(group);
  if (!box) {
    return std::nullopt;
  }
  const double first = group.front()->t;
  const double last = group.back()->t;

  ZoomSegment segment;
  setLevel(segment, levelFor(*box));
  segment.focus = (box->min + box->max) * 0.5F;
  segment.start = std::max(first - clickLeadIn, 0.0);
  segment.end = last + hold + segment.easeOut;
  if (segment.end - segment.start < segment.easeIn + hold + segment.easeOut) {
    segment.end = segment.start + segment.easeIn + hold + segment.easeOut;
  }
  segment.end = std::min(segment.end, duration);
  segment.sourceClickTime = first;
  if (!(segment.end - segment.start > 0.3)) {
    return std::nullopt;
  }
  segment.id = "auto_" + std::to_string(number) + "_" + wholeMilliseconds(first);
  return segment;
}

/// Lets each candidate that begins before the end of the one before fold into that one.
std::vector<ZoomSegment> merged(std::vector<ZoomSegment> candidates) {
  std::vector<ZoomSegment> result;
  for (ZoomSegment& next : candidates) {
    if (result.empty() || next.start >= result.back().end) {
      result.push_back(std::move(next));
      continue;
    }
    ZoomSegment& last = result.back();
    last.end = std::max(last.end, next.end);
    last.focus = (last.focus + next.focus) * 0.5F;
    setLevel(last, std::min(last.level, next.level));
  }
  return result;
}

/// The automatic segments that no manual one overlaps; touching is no overlap. Both lists are in
/// time order and neither overlaps itself, so that one walk over both decides.
std::vector<ZoomSegment> besideManual(std::vector<ZoomSegment> automatic,
                                      std::span<const ZoomSegment> manual) {
  std::vector<ZoomSegment> kept;
  kept.reserve(automatic.size());
  for (ZoomSegment& segment : automatic) {
    while (!manual.empty() && manual.front().end <= segment.start) {
      manual = manual.subspan(1);
    }
    if (manual.empty() || segment.end <= manual.front().start) {
      kept.push_back(std::move(segment));
    }
  }
  return kept;
}

}  // namespace

std::vector<ZoomSegment> inferAutoSegments(const RecordingProject& project,
                                           Sensitivity sensitivity) {
  const double duration = project.duration();
  const std::vector<Click> clicks = meaningfulClicks(project, silenceThreshold(sensitivity));
  std::vector<ZoomSegment> candidates;
  std::size_t number = 0;
  for (const std::span<const Click> group : clusters(clicks, clusterGap(sensitivity))) {
    if (auto segment = candidate(group, number++, duration)) {
      candidates.push_back(std::move(*segment));
    }
  }
  std::vector<ZoomSegment> segments = merged(std::move(candidates));
  std::erase_if(segments,
                [](const ZoomSegment& segment) { return !(segment.end - segment.start > 0.25); });
  return segments;
}

std::vector<ZoomSegment> combinedSegments(const RecordingProject& project, Sensitivity sensitivity,
                                          bool useAutoDetection) {
  std::vector<ZoomSegment> manual = pairManualMarks(project);
  if (!useAutoDetection) {
    return manual;
  }
  std::vector<ZoomSegment> automatic =
      besideManual(inferAutoSegments(project, sensitivity), manual);
  std::vector<ZoomSegment> all;
  all.reserve(manual.size() + automatic.size());
  std::ranges::merge(std::make_move_iterator(manual.begin()), std::make_move_iterator(manual.end()),
                     std::make_move_iterator(automatic.begin()),
                     std::make_move_iterator(automatic.end()), std::back_inserter(all), {},
                     &ZoomSegment::start, &ZoomSegment::start);
  return all;
}

}  // namespace vesk::motion
