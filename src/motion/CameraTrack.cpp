#include "motion/CameraTrack.h"

#include <algorithm>
#include <cmath>
#include <iterator>
#include <utility>

#include "motion/CursorFollowing.h"
#include "motion/KeyframePass.h"
#include "motion/PerspectivePass.h"
#include "motion/ViewportSmoothing.h"

namespace vesk::motion {
namespace {

/// Samples for a recording of this length, a little past its end; none for a length that is none.
std::size_t sampleCount(double duration) {
  if (!(duration > 0) || !std::isfinite(duration)) {
    return 0;
  }
  return static_cast<std::size_t>(std::min(duration, longestTrack) / trackStep) + 2;
}

}  // namespace

CameraPose CameraTrack::sample(double t) const {
  if (samples.empty()) {
    return {};
  }
  const double x = (t - t0) / step;
  if (!(x > 0)) {
    return samples.front();
  }
  if (x >= static_cast<double>(samples.size() - 1)) {
    return samples.back();
  }
  const auto i = static_cast<std::size_t>(x);
  const double f = x - static_cast<double>(i);
  const CameraPose& a = samples[i];
  const CameraPose& b = samples[i + 1];
  CameraPose pose = a;
  pose.target = a.target + (b.target - a.target) * static_cast<float>(f);
  pose.yaw = a.yaw + (b.yaw - a.yaw) * f;
  pose.pitch = a.pitch + (b.pitch - a.pitch) * f;
  pose.roll = a.roll + (b.roll - a.roll) * f;
  pose.framing = a.framing + (b.framing - a.framing) * f;
  return pose;
}

std::vector<ZoomSegment> effectiveSegments(std::span<const ZoomSegment> segments) {
  std::vector<ZoomSegment> effective;
  std::ranges::copy_if(segments, std::back_inserter(effective), [](const ZoomSegment& segment) {
    return segment.enabled && segment.end - segment.start > 0.01;
  });
  std::ranges::stable_sort(effective, {}, &ZoomSegment::start);
  return effective;
}

CameraTrack buildTrack(std::span<const ZoomSegment> segments, const CursorTrack& cursorTrack,
                       double duration, const package::Camera3DSettings& camera3D,
                       CameraEase ease) {
  const std::vector<ZoomSegment> effective = effectiveSegments(segments);
  const std::size_t count = sampleCount(duration);
  CameraTrack track;
  if (effective.empty() || count == 0) {
    return track;
  }
  const double fov = camera3D.enabled ? camera3D.fov : CameraPose{}.fov;
  track.samples = smoothViewports(keyframePass(effective, count, fov, ease));
  track.samples =
      followCursor(std::move(track.samples), effective, cursorTrack, ease, camera3D.enabled);
  if (camera3D.enabled) {
    track.samples = tiltCamera(std::move(track.samples), camera3D);
  }
  return track;
}

}  // namespace vesk::motion
