#pragma once

#include <algorithm>
#include <array>
#include <cmath>
#include <cstdint>
#include <random>
#include <string>
#include <utility>
#include <vector>

#include "motion/CameraEase.h"
#include "motion/ZoomSegment.h"
#include "package/RecordingProject.h"
#include "package/StyleSettings.h"

namespace vesk::motion::test {

/// Takes, timelines and settings that are a pure function of a seed, on every machine.
class RandomTake {
 public:
  explicit RandomTake(std::uint64_t seed) : engine_(seed) {}

  // Not std::uniform_…_distribution: its results differ between standard libraries.
  double between(double low, double high) {
    return low + (high - low) * (static_cast<double>(engine_() >> 11U) * 0x1p-53);
  }
  std::size_t below(std::size_t count) { return engine_() % count; }
  bool chance(double share) { return between(0, 1) < share; }
  glm::vec2 point() {
    return {static_cast<float>(between(0, 1)), static_cast<float>(between(0, 1))};
  }
  CameraEase ease() { return allCameraEases.at(below(allCameraEases.size())); }

  struct Shape {
    double duration = 30;
    std::size_t clicks = 20;
    double movesPerSecond = 120;
    std::size_t marks = 0;
    std::size_t appChanges = 4;
  };

  /// A take in which the cursor glides between points, rests with a tremor, and clicks; some clicks
  /// come in bursts, and some clicks and marks lack a coordinate.
  package::RecordingProject project(const Shape& shape) {
    std::vector<package::RecordedEvent> events = moves(shape.duration, shape.movesPerSecond);
    const std::vector<package::RecordedEvent> path = events;
    addClicks(events, path, shape);
    for (std::size_t i = 0; i < shape.marks; ++i) {
      const auto kind = chance(0.55) ? Kind::zoomIn : Kind::zoomOut;
      events.push_back(placed(kind, between(0, shape.duration), path));
    }
    for (std::size_t i = 0; i < shape.appChanges; ++i) {
      events.push_back({.t = between(0, shape.duration), .type = Kind::appChange, .app = "App"});
    }
    package::RecordingMeta meta;
    meta.captureWidth = 1920;
    meta.captureHeight = 1080;
    meta.duration = shape.duration;
    return package::RecordingProject::make({}, meta, std::move(events));
  }

  /// A timeline as an edited document can hold it: overlapping, nested and disabled segments,
  /// waypoints out of order, ids that occur twice, easings longer than the segment.
  std::vector<ZoomSegment> editedSegments(double duration, std::size_t count) {
    std::vector<ZoomSegment> segments;
    for (std::size_t i = 0; i < count; ++i) {
      segments.push_back(editedSegment(duration, i));
      if (chance(0.2)) {  // the framing of another one
        segments.back().level = segments.front().level;
        segments.back().focus = segments.front().focus;
      }
    }
    return segments;
  }

  package::Camera3DSettings camera3D() {
    package::Camera3DSettings settings;
    settings.enabled = chance(0.5);
    settings.fov = between(12, 70);
    settings.yaw = between(-45, 45);
    settings.pitch = between(-35, 35);
    settings.roll = between(-15, 15);
    return settings;
  }

 private:
  using Kind = package::RecordedEvent::Kind;

  std::vector<package::RecordedEvent> moves(double duration, double perSecond) {
    constexpr double tremor = 0.002;
    std::vector<package::RecordedEvent> events;
    if (!(perSecond > 0)) {
      return events;
    }
    glm::vec2 from = point();
    glm::vec2 to = point();
    double glideStart = 0;
    double glide = between(0.2, 0.8);
    double rest = between(0.1, 2.0);
    const auto count = static_cast<std::size_t>(duration * perSecond);
    events.reserve(count);
    for (std::size_t i = 0; i < count; ++i) {
      const double t = (static_cast<double>(i) + between(0, 0.9)) / perSecond;
      if (t > glideStart + glide + rest) {
        from = to;
        to = chance(0.5) ? point() : from + (point() - 0.5F) * 0.1F;
        glideStart = t;
        glide = between(0.2, 0.8);
        rest = between(0.1, 2.0);
      }
      const double progress = std::clamp((t - glideStart) / glide, 0.0, 1.0);
      const double eased = progress * progress * (3 - 2 * progress);
      events.push_back({.t = t,
                        .type = Kind::move,
                        .x = from.x + (to.x - from.x) * eased + between(-tremor, tremor),
                        .y = from.y + (to.y - from.y) * eased + between(-tremor, tremor)});
    }
    return events;
  }

  /// An event at the cursor's place, or anywhere when no path is known.
  package::RecordedEvent placed(Kind kind, double t,
                                const std::vector<package::RecordedEvent>& path) {
    package::RecordedEvent event{.t = t, .type = kind};
    const auto at = std::ranges::lower_bound(path, t, {}, &package::RecordedEvent::t);
    event.x = at == path.end() ? between(0, 1) : at->x;
    event.y = at == path.end() ? between(0, 1) : at->y;
    if (chance(0.03)) {
      event.x.reset();
    }
    if (chance(0.03)) {
      event.y.reset();
    }
    return event;
  }

  void addClicks(std::vector<package::RecordedEvent>& events,
                 const std::vector<package::RecordedEvent>& path, const Shape& shape) {
    double t = 0;
    for (std::size_t i = 0; i < shape.clicks; ++i) {
      t = i > 0 && chance(0.2) ? t + between(0.05, 0.45) : between(0, shape.duration);
      events.push_back(placed(Kind::click, t, path));
      events.push_back(placed(Kind::up, t + between(0.02, 0.2), path));
    }
  }

  ZoomSegment editedSegment(double duration, std::size_t index) {
    ZoomSegment segment;
    segment.id = "user_" + std::to_string(chance(0.1) ? index / 2 : index);
    segment.start = between(-0.5, duration);
    segment.end = segment.start + between(0, chance(0.1) ? duration : 6.0);
    segment.enabled = !chance(0.1);
    segment.level = chance(0.05) ? between(0, 1) : between(1, 5);
    segment.focus = chance(0.05) ? point() * 3.0F - 1.0F : point();
    segment.followCursor = !chance(0.25);
    segment.deadzone = between(-0.1, 1.1);
    segment.followSpeed = between(0.05, 1.0);
    segment.endsWithExplicitReset = chance(0.2);
    segment.easeIn = between(0, 1.2);
    segment.easeOut = between(0, 1.2);
    segment.motionBlur = between(0, 1);
    segment.panDuration = chance(0.1) ? 0 : between(0.1, 1.0);
    const std::size_t waypoints = chance(0.5) ? 0 : below(6);
    for (std::size_t i = 0; i < waypoints; ++i) {
      segment.waypoints.push_back(
          {.t = between(segment.start - 0.2, segment.end + 0.2), .focus = point()});
    }
    if (chance(0.6)) {
      std::ranges::sort(segment.waypoints, {}, &ZoomSegment::Waypoint::t);
    }
    return segment;
  }

  std::mt19937_64 engine_;
};

}  // namespace vesk::motion::test
