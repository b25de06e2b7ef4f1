#include <algorithm>
#include <cmath>
#include <string>

#include "motion/PlainRules.h"

namespace vesk::motion::plain {
namespace {

struct Key {
  double t;
  double zoom;
  glm::vec2 center;
  double blur;
};

bool joined(const ZoomSegment& a, const ZoomSegment& b) {
  const float dx = b.focus.x - a.focus.x;
  const float dy = b.focus.y - a.focus.y;
  return !a.endsWithExplicitReset && b.start - a.end < 1.5 && std::sqrt(dx * dx + dy * dy) < 0.6F;
}

std::vector<Key> keys(const std::vector<ZoomSegment>& segments) {
  const glm::vec2 middle{0.5F, 0.5F};
  std::vector<Key> result;
  for (std::size_t i = 0; i < segments.size(); ++i) {
    const ZoomSegment& s = segments[i];
    const bool fromPrevious = i > 0 && joined(segments[i - 1], s);
    const bool toNext = i + 1 < segments.size() && joined(s, segments[i + 1]);
    const glm::vec2 last = s.waypoints.empty() ? s.focus : s.waypoints.back().focus;
    if (!fromPrevious) {
      result.push_back({s.start, 1, middle, 0});
    }
    result.push_back({s.start + s.easeIn, s.level, s.focus, s.motionBlur});
    if (toNext) {
      result.push_back({s.end, s.level, last, s.motionBlur});
    } else {
      result.push_back(
          {std::max(s.end - s.easeOut, s.start + s.easeIn), s.level, last, s.motionBlur});
      result.push_back({s.end, 1, middle, 0});
    }
  }
  std::ranges::stable_sort(result, {}, &Key::t);
  return result;
}

float originOf(float centre, double w) {
  const auto half = static_cast<float>(w / 2);
  float inside = std::max(centre, half);
  inside = std::min(inside, 1.0F - half);
  return inside - half;
}

std::vector<CameraPose> pass1(const std::vector<ZoomSegment>& segments, std::size_t n, double step,
                              double fov, CameraEase ease) {
  const std::vector<Key> k = keys(segments);
  std::vector<CameraPose> samples(n);
  for (std::size_t i = 0; i < n; ++i) {
    const double t = step * static_cast<double>(i);
    CameraPose& pose = samples[i];
    pose.fov = fov;
    if (t <= k.front().t) {
      pose.target = k.front().center;
      continue;
    }
    if (t >= k.back().t) {
      pose.framing = k.back().zoom;
      pose.target = k.back().center;
      pose.motionBlur = k.back().blur;
      continue;
    }
    std::size_t at = 1;
    while (k[at].t < t) {
      ++at;
    }
    const Key& a = k[at - 1];
    const Key& b = k[at];
    double e = 1;
    if (b.t - a.t > 1e-9) {
      e = value(ease, (t - a.t) / (b.t - a.t));
    }
    const double wa = a.zoom <= 0.001 ? 1000 : 1 / a.zoom;
    const double wb = 1 / std::max(b.zoom, 0.001);
    const double w = wa + (wb - wa) * e;
    for (int axis = 0; axis < 2; ++axis) {
      const float oa = originOf(a.center[axis], wa);
      const float ob = originOf(b.center[axis], wb);
      const float origin = oa + (ob - oa) * static_cast<float>(e);
      pose.target[axis] = origin + static_cast<float>(w / 2);
    }
    pose.framing = 1 / std::max(w, 0.0001);
    pose.motionBlur = a.blur + (b.blur - a.blur) * e;
  }
  return samples;
}

std::vector<CameraPose> pass2(const std::vector<CameraPose>& in) {
  std::vector<CameraPose> out = in;
  const int n = static_cast<int>(in.size());
  for (int i = 0; i < n; ++i) {
    double sum = 0;
    double sumW = 0;
    float sumX = 0;
    float sumY = 0;
    for (int j = std::max(i - 6, 0); j <= std::min(i + 6, n - 1); ++j) {
      const float u = 1.0F - static_cast<float>(std::abs(j - i)) / 7.0F;
      const CameraPose& pose = in[static_cast<std::size_t>(j)];
      const double w = 1 / std::max(pose.framing, 0.0001);
      sum += static_cast<double>(u);
      sumW += static_cast<double>(u) * w;
      sumX += u * originOf(pose.target.x, w);
      sumY += u * originOf(pose.target.y, w);
    }
    CameraPose& pose = out[static_cast<std::size_t>(i)];
    const double w = sumW / sum;
    const auto total = static_cast<float>(sum);
    const auto half = static_cast<float>(w / 2);
    pose.framing = w <= 0.0001 ? 10000 : 1 / w;
    pose.target = {sumX / total + half, sumY / total + half};
  }
  return out;
}

void pass3(std::vector<CameraPose>& samples, const std::vector<ZoomSegment>& segments,
           const CursorTrack& track, double step, CameraEase ease, bool perspective) {
  glm::vec2 follow = smoothed(track, 0, 0.7, 0.12);
  glm::vec2 panFrom{0.5F, 0.5F};
  std::string panKey;
  bool wasSettled = false;
  const int firstAxis = perspective ? 1 : 0;

  for (std::size_t i = 0; i < samples.size(); ++i) {
    const double t = step * static_cast<double>(i);
    CameraPose& sample = samples[i];

    const ZoomSegment* segment = nullptr;
    for (const ZoomSegment& s : segments) {
      if (s.start <= t && t <= s.end) {
        segment = &s;
        break;
      }
    }
    if (segment == nullptr) {
      wasSettled = false;
      continue;
    }

    const double holdStart = segment->start + segment->easeIn;
    const bool settled = segment->followCursor && t >= holdStart;
    const bool inHold = settled && t <= std::max(segment->end - segment->easeOut, holdStart);

    int pan = -1;
    for (std::size_t k = 0; k < segment->waypoints.size(); ++k) {
      const double start = segment->waypoints[k].t;
      if (start <= t && t < start + segment->panDuration) {
        pan = static_cast<int>(k);
        break;
      }
    }

    const glm::vec2 s = sample.target;
    if (pan >= 0) {
      const ZoomSegment::Waypoint& waypoint = segment->waypoints[static_cast<std::size_t>(pan)];
      const std::string key = segment->id + "#" + std::to_string(pan);
      if (key != panKey) {
        panFrom = follow;
        panKey = key;
      }
      const double through = std::clamp((t - waypoint.t) / segment->panDuration, 0.0, 1.0);
      const auto e = static_cast<float>(value(ease, through));
      if (settled && !wasSettled) {
        follow = s;
      } else {
        follow = panFrom + (waypoint.focus - panFrom) * e;
      }
      sample.target = s + (follow - s) * 1.0F;
      wasSettled = settled;
      continue;
    }
    if (!settled) {
      sample.target = s + (follow - s) * 0.0F;
      wasSettled = false;
      continue;
    }

    if (!wasSettled) {
      follow = s;
    }
    const glm::vec2 cursor = smoothed(track, t, 0.75, 0.14);
    const auto w = static_cast<float>(1 / std::max(sample.framing, 0.0001));
    const float h = w * 0.5F;
    if (inHold) {
      const double dead = std::min(std::max(segment->deadzone, 0.05), 0.95);
      const double lo = (1 - dead) * 0.5;
      const double hi = 1 - lo;
      bool outside = false;
      for (int axis = firstAxis; axis < 2; ++axis) {
        const float place = (cursor[axis] - (follow[axis] - h)) / w;
        outside = outside || place < lo || place > hi;
      }
      const glm::vec2 d = cursor - follow;
      const float dist = std::sqrt(d.x * d.x + d.y * d.y);
      if (outside && dist > 0.00001F) {
        const float r = dist / std::max(h, 0.00001F) - 0.5F;
        const double m = r >= 3 ? 16.0 : 1 + 5 * std::max(r, 0.0F);
        const auto length =
            static_cast<float>(std::min(m * segment->followSpeed / 60, static_cast<double>(dist)));
        for (int axis = firstAxis; axis < 2; ++axis) {
          follow[axis] += d[axis] * (length / dist);
        }
      }
      const float q = h - 0.04F * w;
      for (int axis = firstAxis; axis < 2; ++axis) {
        follow[axis] = std::min(std::max(follow[axis], cursor[axis] - q), cursor[axis] + q);
      }
    }

    const double a = std::min((t - holdStart) * 4, 1.0);
    const auto weight =
        static_cast<float>(a >= 0.5 ? 1 - (2 - 2 * a) * (2 - 2 * a) / 2 : 2 * a * a);
    sample.target = s + (follow - s) * weight;
    if (inHold) {
      const float q = 2 * (1 - weight) + w / 2 - 0.04F * w;
      for (int axis = firstAxis; axis < 2; ++axis) {
        sample.target[axis] =
            std::min(std::max(sample.target[axis], cursor[axis] - q), cursor[axis] + q);
      }
    }
    wasSettled = true;
  }
}

double leaning(float place, double magnitude) {
  const double d = std::clamp((place - 0.5F) * 4.0F, -1.0F, 1.0F);
  const double size = std::abs(d);
  const double angle = std::abs(magnitude) * (size * size * (3 - 2 * size));
  return d < 0 ? -angle : angle;
}

void pass4(std::vector<CameraPose>& samples, const package::Camera3DSettings& camera3D) {
  for (CameraPose& pose : samples) {
    const double a = std::clamp(2 * (pose.framing - 1), 0.0, 1.0);
    pose.yaw = leaning(pose.target.x, camera3D.yaw) * a;
    pose.pitch = leaning(pose.target.y, camera3D.pitch) * a;
    pose.roll = camera3D.roll * a;
  }
  const std::vector<CameraPose> in = samples;
  const int n = static_cast<int>(in.size());
  for (int i = 0; i < n; ++i) {
    double sum = 0;
    CameraPose& out = samples[static_cast<std::size_t>(i)];
    out.yaw = 0;
    out.pitch = 0;
    out.roll = 0;
    for (int j = std::max(i - 5, 0); j <= std::min(i + 5, n - 1); ++j) {
      const double u = 1.0 - static_cast<double>(std::abs(j - i)) / 6.0;
      const CameraPose& pose = in[static_cast<std::size_t>(j)];
      sum += u;
      out.yaw += u * pose.yaw;
      out.pitch += u * pose.pitch;
      out.roll += u * pose.roll;
    }
    out.yaw /= sum;
    out.pitch /= sum;
    out.roll /= sum;
  }
}

glm::vec2 position(const CursorTrack& track, double t) {
  const auto& samples = track.samples;
  if (t <= samples.front().t) {
    return samples.front().p;
  }
  if (t >= samples.back().t) {
    return samples.back().p;
  }
  std::size_t b = 0;
  while (samples[b].t < t) {
    ++b;
  }
  const double span = samples[b].t - samples[b - 1].t;
  if (!(span > 1e-9)) {
    return samples[b].p;
  }
  const auto f = static_cast<float>((t - samples[b - 1].t) / span);
  return samples[b - 1].p + (samples[b].p - samples[b - 1].p) * f;
}

}  // namespace

double effectiveStrength(const CursorTrack& track, double t, double strength) {
  if (track.clickTimes.empty()) {
    return strength;
  }
  double smallest = std::abs(track.clickTimes.front() - t);
  for (const double click : track.clickTimes) {
    smallest = std::min(smallest, std::abs(click - t));
    if (click > t + track.anchorWindow) {
      break;
    }
  }
  return smallest < track.anchorWindow ? strength * smallest / track.anchorWindow : strength;
}

glm::vec2 smoothed(const CursorTrack& track, double t, double strength, double window) {
  if (track.samples.empty()) {
    return {0.5F, 0.5F};
  }
  if (track.samples.size() == 1) {
    return track.samples.front().p;
  }
  const glm::vec2 raw = position(track, t);
  const double s = effectiveStrength(track, t, strength);
  if (!(s > 0.001)) {
    return raw;
  }
  const double sigma = std::max(window * s * 0.25, 0.004);
  float weights = 0;
  glm::vec2 sum{0.0F, 0.0F};
  for (const CursorTrack::Sample& sample : track.samples) {
    if (sample.t >= t - 2.5 * sigma && sample.t <= t + 2.5 * sigma) {
      const double d = sample.t - t;
      const auto u = static_cast<float>(std::exp(-0.5 * (d * d) / (sigma * sigma)));
      weights += u;
      sum += sample.p * u;
    }
  }
  if (!(weights > 0.0001F)) {
    return raw;
  }
  return raw + (sum / weights - raw) * static_cast<float>(s);
}

CameraTrack buildTrack(const std::vector<ZoomSegment>& segments, const CursorTrack& cursorTrack,
                       double duration, const package::Camera3DSettings& camera3D,
                       CameraEase ease) {
  std::vector<ZoomSegment> used;
  for (const ZoomSegment& segment : segments) {
    if (segment.enabled && segment.end - segment.start > 0.01) {
      used.push_back(segment);
    }
  }
  std::ranges::stable_sort(used, {}, &ZoomSegment::start);
  CameraTrack track;
  if (used.empty() || !(duration > 0)) {
    return track;
  }
  const auto n = static_cast<std::size_t>(duration / track.step) + 2;
  track.samples = pass2(pass1(used, n, track.step, camera3D.enabled ? camera3D.fov : 28.0, ease));
  pass3(track.samples, used, cursorTrack, track.step, ease, camera3D.enabled);
  if (camera3D.enabled) {
    pass4(track.samples, camera3D);
  }
  return track;
}

}  // namespace vesk::motion::plain
