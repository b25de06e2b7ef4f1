#pragma once

#include <array>
#include <string>
#include <vector>

#include "motion/CameraEase.h"
#include "motion/CameraTrack.h"
#include "motion/CursorTrack.h"
#include "motion/EffectTimeline.h"
#include "motion/ZoomSegment.h"
#include "package/RecordingProject.h"
#include "package/StyleSettings.h"

namespace vesk::motion {

/// What the user may choose about a motion report.
struct ReportOptions {
  bool gate = false;  ///< a criterion that fails turns the exit code to 1
  package::Camera3DSettings camera3D;
  CameraEase ease = CameraEase::smooth;
  bool easeProfile = false;  ///< print the push-in profile of the first segment
};

/// The timeline that the inference gives at one sensitivity.
struct LevelResult {
  Sensitivity sensitivity = Sensitivity::standard;
  std::vector<ZoomSegment> segments;
  double coverage = 0;  ///< share of the effective duration
};

/// What every section of a motion report and every criterion works on. The track is built from the
/// standard level, with the follow speed that the inference gave each segment.
struct DumpCtx {
  package::RecordingProject p;
  std::vector<ZoomSegment> segs;  ///< the segments measured: those that take part in the track
  CameraTrack track;
  double camAspect = 16.0 / 9;  ///< width over height of picture and frame
  std::string line;             ///< the separator
  bool gating = false;
  CursorTrack cursorTrack;
  package::Camera3DSettings camera3D;
  CameraEase ease = CameraEase::smooth;
  bool easeProfile = false;
  std::array<LevelResult, allSensitivities.size()> levels;  ///< in the order of the sensitivities
};

DumpCtx makeDumpCtx(package::RecordingProject project, const ReportOptions& options);

}  // namespace vesk::motion
