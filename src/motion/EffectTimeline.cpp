#include "motion/EffectTimeline.h"

#include <algorithm>

namespace vesk::motion {
namespace {

struct Level {
  Sensitivity sensitivity;
  std::string_view rawValue;
  double silenceThreshold;
  double clusterGap;
};

constexpr std::array levels{
    Level{Sensitivity::conservative, "保守", 1.5, 2.0},
    Level{Sensitivity::standard, "标准", 0.8, 1.2},
    Level{Sensitivity::dense, "密集", 0.4, 0.6},
};

const Level& level(Sensitivity sensitivity) {
  return *std::ranges::find(levels, sensitivity, &Level::sensitivity);
}

}  // namespace

std::string_view rawValue(Sensitivity sensitivity) {
  return level(sensitivity).rawValue;
}

std::optional<Sensitivity> sensitivity(std::string_view raw) {
  const auto* const found = std::ranges::find(levels, raw, &Level::rawValue);
  return found == levels.end() ? std::nullopt : std::optional(found->sensitivity);
}

double silenceThreshold(Sensitivity sensitivity) {
  return level(sensitivity).silenceThreshold;
}

double clusterGap(Sensitivity sensitivity) {
  return level(sensitivity).clusterGap;
}

double coverage(const std::vector<ZoomSegment>& segments, double duration) {
  if (!(duration > 0)) {
    return 0;
  }
  double covered = 0;
  for (const ZoomSegment& segment : segments) {
    if (segment.enabled) {
      covered += segment.end - segment.start;
    }
  }
  return std::min(covered / duration, 1.0);
}

double EffectTimeline::coverage(double duration) const {
  return motion::coverage(segments, duration);
}

}  // namespace vesk::motion
