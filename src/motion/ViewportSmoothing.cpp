#include "motion/ViewportSmoothing.h"

#include <algorithm>
#include <span>

#include "motion/Viewport.h"

namespace vesk::motion {
namespace {

constexpr std::size_t viewReach = 6;

float viewWeight(std::size_t distance) {
  return 1.0F - static_cast<float>(distance) / static_cast<float>(viewReach + 1);
}

std::vector<Viewport> viewports(std::span<const CameraPose> samples) {
  std::vector<Viewport> views;
  views.reserve(samples.size());
  for (const CameraPose& pose : samples) {
    views.push_back(viewportInside(1 / std::max(pose.framing, 0.0001), pose.target));
  }
  return views;
}

/// The weighted mean of the viewports around index i. Its own weight is 1, so the sum is positive.
Viewport meanAround(std::span<const Viewport> views, std::size_t i) {
  const std::size_t first = i - std::min(i, viewReach);
  const std::size_t last = std::min(i + viewReach, views.size() - 1);
  double weights = 0;
  double widths = 0;
  glm::vec2 origins{0.0F, 0.0F};
  for (std::size_t j = first; j <= last; ++j) {
    const float u = viewWeight(j < i ? i - j : j - i);
    weights += u;
    widths += u * views[j].width;
    origins += u * views[j].origin;
  }
  return {.width = widths / weights, .origin = origins / static_cast<float>(weights)};
}

}  // namespace

std::vector<CameraPose> smoothViewports(std::vector<CameraPose> samples) {
  const std::vector<Viewport> views = viewports(samples);
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const Viewport mean = meanAround(views, i);
    samples[i].framing = mean.width <= 0.0001 ? 10000 : 1 / mean.width;
    samples[i].target = mean.centre();
  }
  return samples;
}

}  // namespace vesk::motion
