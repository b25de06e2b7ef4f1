#pragma once

#include <utility>
#include <vector>

#include "package/RecordingProject.h"

// Short ways to write down takes in tests.
namespace vesk::motion::test {

using Kind = package::RecordedEvent::Kind;

inline package::RecordedEvent at(double t, Kind kind, double x, double y) {
  return {.t = t, .type = kind, .x = x, .y = y};
}
inline package::RecordedEvent click(double t, double x = 0.5, double y = 0.5) {
  return at(t, Kind::click, x, y);
}
inline package::RecordedEvent move(double t, double x, double y) {
  return at(t, Kind::move, x, y);
}
inline package::RecordedEvent zoomIn(double t, double x = 0.5, double y = 0.5) {
  return at(t, Kind::zoomIn, x, y);
}
inline package::RecordedEvent zoomOut(double t, double x = 0.5, double y = 0.5) {
  return at(t, Kind::zoomOut, x, y);
}
inline package::RecordedEvent appChange(double t) {
  return {.t = t, .type = Kind::appChange, .app = "App"};
}

inline package::RecordingProject take(double duration, std::vector<package::RecordedEvent> events) {
  package::RecordingMeta meta;
  meta.duration = duration;
  return package::RecordingProject::make({}, meta, std::move(events));
}

}  // namespace vesk::motion::test
