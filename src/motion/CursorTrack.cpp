#include "motion/CursorTrack.h"

#include <algorithm>
#include <cmath>
#include <iterator>

#include "motion/PicturePoint.h"

namespace vesk::motion {
namespace {

using package::RecordedEvent;

bool tellsCursor(const RecordedEvent& event) {
  switch (event.type) {
    case RecordedEvent::Kind::click:
    case RecordedEvent::Kind::up:
    case RecordedEvent::Kind::move:
    case RecordedEvent::Kind::scroll:
      return event.x.has_value() && event.y.has_value();
    default:
      return false;
  }
}

}  // namespace

CursorTrack::CursorTrack(const package::RecordingProject& project) {
  samples.reserve(project.events.size());
  for (const RecordedEvent& event : project.events) {
    if (tellsCursor(event)) {
      samples.push_back({.t = event.t, .p = picturePoint(*event.x, *event.y)});
    }
  }
  clickTimes.reserve(project.clicks.size());
  std::ranges::transform(project.clicks, std::back_inserter(clickTimes), &RecordedEvent::t);
}

glm::vec2 CursorTrack::position(double t) const {
  if (t <= samples.front().t) {
    return samples.front().p;
  }
  if (t >= samples.back().t) {
    return samples.back().p;
  }
  const auto next = std::ranges::lower_bound(samples, t, {}, &Sample::t);
  const Sample& a = *std::prev(next);
  const Sample& b = *next;
  const double span = b.t - a.t;
  if (!(span > 1e-9)) {
    return b.p;
  }
  return a.p + (b.p - a.p) * static_cast<float>((t - a.t) / span);
}

double CursorTrack::effectiveStrength(double t, double strength) const {
  // Times ascend, so the nearest click is one of the two around t.
  const auto next = std::ranges::lower_bound(clickTimes, t);
  double distance = anchorWindow;
  if (next != clickTimes.end()) {
    distance = std::min(distance, *next - t);
  }
  if (next != clickTimes.begin()) {
    distance = std::min(distance, t - *std::prev(next));
  }
  return distance < anchorWindow ? strength * distance / anchorWindow : strength;
}

glm::vec2 CursorTrack::smoothed(double t, double strength, double window) const {
  if (samples.empty()) {
    return {0.5F, 0.5F};
  }
  if (samples.size() == 1) {
    return samples.front().p;
  }
  const glm::vec2 raw = position(t);
  const double share = effectiveStrength(t, strength);
  if (!(share > 0.001)) {
    return raw;
  }
  const double sigma = std::max(window * share * 0.25, 0.004);
  const double reach = 2.5 * sigma;
  glm::vec2 sum{0.0F, 0.0F};
  float weights = 0;
  for (auto sample = std::ranges::lower_bound(samples, t - reach, {}, &Sample::t);
       sample != samples.end() && sample->t <= t + reach; ++sample) {
    const double offset = sample->t - t;
    const auto weight = static_cast<float>(std::exp(-0.5 * (offset * offset) / (sigma * sigma)));
    sum += sample->p * weight;
    weights += weight;
  }
  if (!(weights > 0.0001F)) {
    return raw;
  }
  return raw + (sum / weights - raw) * static_cast<float>(share);
}

}  // namespace vesk::motion
