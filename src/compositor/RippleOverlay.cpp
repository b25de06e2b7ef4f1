#include "compositor/RippleOverlay.h"

#include <algorithm>

#include "motion/CameraPose.h"

namespace vesk::compositor {

std::vector<RippleInstance> rippleInstances(const package::RippleSettings& settings,
                                            std::span<const package::RecordedEvent> clicks,
                                            const glm::mat4& matrix, double framing, double time,
                                            const ContentRect& rect, double canvasAspect) {
  // At 30 frames a second anything shorter would be three frames, which nobody sees.
  constexpr double shortestDuration = 0.15;
  const double duration = std::max(settings.duration, shortestDuration);
  const auto first = std::ranges::partition_point(
      clicks, [&](const package::RecordedEvent& click) { return time - click.t > duration; });

  std::vector<RippleInstance> ripples;
  for (auto click = first; click != clicks.end() && click->t <= time; ++click) {
    if (!click->x || !click->y) continue;
    const auto center = motion::project(glm::vec2(*click->x, *click->y), matrix);
    if (!center) continue;
    if (ripples.empty()) ripples.reserve(8);
    ripples.push_back(
        {.center = *center,
         .color = glm::vec4(settings.color.r, settings.color.g, settings.color.b, settings.opacity),
         .progress = static_cast<float>((time - click->t) / duration),
         .maxRadius = static_cast<float>(settings.size * rect.size.y * framing),
         .style = package::rawValue(settings.style),
         .stroke = settings.stroke ? 1.0F : 0.0F,
         .aspect = glm::vec2(1, canvasAspect)});
    if (ripples.size() == maxRipples) break;
  }
  return ripples;
}

}  // namespace vesk::compositor
