#include "motion/KeyframePass.h"

#include <algorithm>
#include <glm/geometric.hpp>

#include "motion/CameraTrack.h"
#include "motion/Viewport.h"

namespace vesk::motion {
namespace {

struct Keyframe {
  double t = 0;
  double zoom = 1;
  glm::vec2 center{0.5F, 0.5F};
  double blur = 0;

  bool looksLike(const Keyframe& other) const {
    return zoom == other.zoom && center == other.center && blur == other.blur;
  }
};

std::vector<Keyframe> keyframes(std::span<const ZoomSegment> segments) {
  std::vector<Keyframe> frames;
  frames.reserve(segments.size() * 4);
  bool comesFromPrevious = false;
  for (std::size_t i = 0; i < segments.size(); ++i) {
    const ZoomSegment& segment = segments[i];
    const bool leadsToNext = i + 1 < segments.size() && areJoined(segment, segments[i + 1]);
    const double holdStart = segment.start + segment.easeIn;
    const glm::vec2 last =
        segment.waypoints.empty() ? segment.focus : segment.waypoints.back().focus;
    const auto framed = [&segment](double t, glm::vec2 center) {
      return Keyframe{.t = t, .zoom = segment.level, .center = center, .blur = segment.motionBlur};
    };
    const auto home = [](double t) { return Keyframe{.t = t}; };

    if (!comesFromPrevious) {
      frames.push_back(home(segment.start));
    }
    frames.push_back(framed(holdStart, segment.focus));
    if (leadsToNext) {
      frames.push_back(framed(segment.end, last));
    } else {
      frames.push_back(framed(std::max(segment.end - segment.easeOut, holdStart), last));
      frames.push_back(home(segment.end));
    }
    comesFromPrevious = leadsToNext;
  }
  std::ranges::stable_sort(frames, {}, &Keyframe::t);
  return frames;
}

CameraPose held(const Keyframe& frame) {
  CameraPose pose;
  pose.target = frame.center;
  pose.framing = frame.zoom;
  pose.motionBlur = frame.blur;
  return pose;
}

CameraPose before(const Keyframe& first) {
  CameraPose pose;
  pose.target = first.center;
  return pose;
}

double progress(const Keyframe& a, const Keyframe& b, double t, CameraEase ease) {
  const double span = b.t - a.t;
  if (!(span > 1e-9) || a.looksLike(b)) {
    return 1;  // during a hold any progress gives the same pose, so the curve need not be solved
  }
  return value(ease, (t - a.t) / span);
}

CameraPose between(const Keyframe& a, const Keyframe& b, double t, CameraEase ease) {
  const double e = progress(a, b, t, ease);
  const Viewport from = viewportInside(a.zoom <= 0.001 ? 1000.0 : 1 / a.zoom, a.center);
  const Viewport to = viewportInside(1 / std::max(b.zoom, 0.001), b.center);
  const Viewport view{.width = from.width + (to.width - from.width) * e,
                      .origin = from.origin + (to.origin - from.origin) * static_cast<float>(e)};
  CameraPose pose;
  pose.target = view.centre();
  pose.framing = 1 / std::max(view.width, 0.0001);
  pose.motionBlur = a.blur + (b.blur - a.blur) * e;
  return pose;
}

}  // namespace

bool areJoined(const ZoomSegment& earlier, const ZoomSegment& later) {
  return !earlier.endsWithExplicitReset && later.start - earlier.end < joinGap &&
         glm::distance(earlier.focus, later.focus) < joinDistance;
}

std::vector<CameraPose> keyframePass(std::span<const ZoomSegment> segments, std::size_t count,
                                     double fov, CameraEase ease) {
  const std::vector<Keyframe> frames = keyframes(segments);
  std::vector<CameraPose> samples;
  samples.reserve(count);
  auto next = frames.begin() + 1;
  for (std::size_t i = 0; i < count; ++i) {
    const double t = trackStep * static_cast<double>(i);
    if (t <= frames.front().t) {
      samples.push_back(before(frames.front()));
    } else if (t >= frames.back().t) {
      samples.push_back(held(frames.back()));
    } else {
      // Time only goes forward, and so does the first keyframe that is not yet behind it.
      while (next->t < t) {
        ++next;
      }
      samples.push_back(between(*(next - 1), *next, t, ease));
    }
    samples.back().fov = fov;
  }
  return samples;
}

}  // namespace vesk::motion
