#include "compositor/CursorOverlay.h"

#include <algorithm>

#include "compositor/CursorImage.h"

namespace vesk::compositor {
namespace {

// The clicks are in ascending order, so the last one not later than `time` stands just before the
// first later one.
std::optional<double> ageOfLastClick(const motion::CursorTrack& track, double time) {
  const auto later = std::ranges::upper_bound(track.clickTimes, time);
  if (later == track.clickTimes.begin()) return std::nullopt;
  return time - *std::prev(later);
}

double captureSize(std::int64_t size, double fallback) {
  return size > 0 ? static_cast<double>(size) : fallback;
}

}  // namespace

double clickShrinkFactor(double age, double amount) {
  constexpr double pressTime = 0.1;
  constexpr double releaseTime = 0.22;
  if (age < 0 || age >= pressTime + releaseTime) return 1;
  if (age < pressTime) {
    const double u = age / pressTime;
    return 1 - amount * u * u;
  }
  const double u = 1 - (age - pressTime) / releaseTime;
  return 1 - amount * u * u;
}

std::optional<CursorUniforms> cursorUniforms(const package::CursorSettings& settings,
                                             const package::RecordingMeta& meta,
                                             const motion::CursorTrack& track,
                                             const glm::mat4& matrix, double framing, double time,
                                             const ContentRect& rect) {
  if (!settings.visible || track.samples.empty()) return std::nullopt;
  const auto position =
      motion::project(track.smoothed(time, settings.smoothing, settings.smoothingWindow), matrix);
  if (!position) return std::nullopt;

  double scale = settings.scale * framing;
  if (const auto age = ageOfLastClick(track, time)) {
    scale *= clickShrinkFactor(*age, settings.clickShrink);
  }
  const CursorGeometry geometry = cursorGeometry(settings.style);
  const glm::dvec2 capture(captureSize(meta.captureWidth, 1920),
                           captureSize(meta.captureHeight, 1080));
  const glm::dvec2 normalised = geometry.size * (std::max(meta.scaleFactor, 1.0) * scale) / capture;
  const glm::vec2 size(normalised * glm::dvec2(rect.size));
  const glm::vec2 hotspot(geometry.hotspot / glm::max(geometry.size, glm::dvec2(1)));
  return CursorUniforms{.origin = *position - size * hotspot, .size = size};
}

}  // namespace vesk::compositor
