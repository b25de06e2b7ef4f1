#include "motion/StoredSegment.h"

#include "package/SinglePrecision.h"

namespace vesk::motion {
namespace {

using Stored = package::EditDocument::Segment;

glm::vec2 position(double x, double y) {
  return {package::singlePrecision(x), package::singlePrecision(y)};
}

}  // namespace

package::EditDocument::Segment storedSegment(const ZoomSegment& segment) {
  Stored stored;
  stored.id = segment.id;
  stored.start = segment.start;
  stored.end = segment.end;
  stored.enabled = segment.enabled;
  stored.sourceClickTime = segment.sourceClickTime;
  stored.level = segment.level;
  stored.focusX = segment.focus.x;
  stored.focusY = segment.focus.y;
  stored.followCursor = segment.followCursor;
  stored.deadzone = segment.deadzone;
  stored.followSpeed = segment.followSpeed;
  stored.isManual = segment.isManual;
  stored.endsWithExplicitReset = segment.endsWithExplicitReset;
  stored.easeIn = segment.easeIn;
  stored.easeOut = segment.easeOut;
  stored.holdMin = segment.holdMin;
  stored.motionBlur = segment.motionBlur;
  stored.panDuration = segment.panDuration;
  stored.waypoints.reserve(segment.waypoints.size());
  for (const auto& [t, focus] : segment.waypoints) {
    stored.waypoints.push_back({.t = t, .x = focus.x, .y = focus.y});
  }
  return stored;
}

ZoomSegment zoomSegment(const package::EditDocument::Segment& stored) {
  ZoomSegment segment;
  segment.id = stored.id;
  segment.start = stored.start;
  segment.end = stored.end;
  segment.enabled = stored.enabled;
  segment.sourceClickTime = stored.sourceClickTime;
  segment.level = stored.level;
  segment.focus = position(stored.focusX, stored.focusY);
  segment.followCursor = stored.followCursor;
  segment.deadzone = stored.deadzone;
  segment.followSpeed = stored.followSpeed;
  segment.isManual = stored.isManual;
  segment.endsWithExplicitReset = stored.endsWithExplicitReset;
  segment.easeIn = stored.easeIn;
  segment.easeOut = stored.easeOut;
  segment.holdMin = stored.holdMin;
  segment.motionBlur = stored.motionBlur;
  segment.panDuration = stored.panDuration;
  segment.waypoints.reserve(stored.waypoints.size());
  for (const auto& [t, x, y] : stored.waypoints) {
    segment.waypoints.push_back({.t = t, .focus = position(x, y)});
  }
  return segment;
}

Sensitivity sensitivityNamed(std::string_view raw) {
  return sensitivity(raw).value_or(Sensitivity::standard);
}

CameraEase cameraEaseNamed(std::string_view raw) {
  return cameraEase(raw).value_or(CameraEase::smooth);
}

}  // namespace vesk::motion
