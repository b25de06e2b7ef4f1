#pragma once

#include <vector>

#include "motion/CameraTrack.h"
#include "motion/CursorTrack.h"
#include "motion/EffectTimeline.h"
#include "motion/ZoomSegment.h"
#include "package/RecordingProject.h"

// The rules of inference, marks and tracks in their plainest form: whole scans at every step and no
// use of order. Slow, for comparison only.
namespace vesk::motion::plain {

std::vector<ZoomSegment> inferAutoSegments(const package::RecordingProject& project,
                                           Sensitivity sensitivity);
std::vector<ZoomSegment> pairManualMarks(const package::RecordingProject& project);
std::vector<ZoomSegment> combinedSegments(const package::RecordingProject& project,
                                          Sensitivity sensitivity, bool useAutoDetection);

double effectiveStrength(const CursorTrack& track, double t, double strength);
glm::vec2 smoothed(const CursorTrack& track, double t, double strength, double window);

CameraTrack buildTrack(const std::vector<ZoomSegment>& segments, const CursorTrack& cursorTrack,
                       double duration, const package::Camera3DSettings& camera3D, CameraEase ease);

}  // namespace vesk::motion::plain
