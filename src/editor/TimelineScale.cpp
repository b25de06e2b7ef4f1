#include "editor/TimelineScale.h"

#include <algorithm>
#include <array>

#include "editor/TimelineLayout.h"

namespace vesk::editor {
namespace {

constexpr double fittedWidth = 900;
constexpr double tickDistance = 90;
constexpr std::array tickIntervals{0.5, 1.0, 2.0, 5.0, 10.0, 15.0, 30.0, 60.0, 120.0, 300.0};
constexpr double longestTickInterval = 600;
constexpr double tenthsFrom = 60;
constexpr double snapPoints = 8;
constexpr double leastPoints = 24;
constexpr double leastSeconds = 0.3;

}  // namespace

double zoomedIn(double pxPerSec) {
  return std::min(pxPerSec * zoomStep, mostPxPerSec);
}

double zoomedOut(double pxPerSec) {
  return std::max(pxPerSec / zoomStep, leastPxPerSec);
}

double fittedScale(double duration, double pxPerSec) {
  if (!(duration > 0)) return pxPerSec;
  return std::max((fittedWidth - timeline::headWidth) / duration, leastPxPerSec);
}

double tickInterval(double pxPerSec) {
  const auto* const interval = std::ranges::find_if(
      tickIntervals, [=](double seconds) { return seconds >= tickDistance / pxPerSec; });
  return interval == tickIntervals.end() ? longestTickInterval : *interval;
}

bool hasTenths(double pxPerSec) {
  return pxPerSec > tenthsFrom;
}

double snapDistance(double pxPerSec) {
  return snapPoints / pxPerSec;
}

double leastLength(double pxPerSec) {
  return std::max(leastPoints / pxPerSec, leastSeconds);
}

}  // namespace vesk::editor
