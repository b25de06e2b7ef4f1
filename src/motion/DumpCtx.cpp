#include "motion/DumpCtx.h"

#include <cstddef>
#include <utility>

#include "motion/ReportText.h"
#include "motion/SmartZoom.h"

namespace vesk::motion {

DumpCtx makeDumpCtx(package::RecordingProject project, const ReportOptions& options) {
  DumpCtx context;
  context.p = std::move(project);
  context.line = ruler();
  context.gating = options.gate;
  context.camera3D = options.camera3D;
  context.ease = options.ease;
  context.easeProfile = options.easeProfile;

  const double duration = context.p.duration();
  for (std::size_t i = 0; i < allSensitivities.size(); ++i) {
    LevelResult& level = context.levels[i];
    level.sensitivity = allSensitivities[i];
    level.segments = combinedSegments(context.p, level.sensitivity, true);
    level.coverage = coverage(level.segments, duration);
    if (level.sensitivity == Sensitivity::standard) {
      context.segs = effectiveSegments(level.segments);
    }
  }

  const package::RecordingMeta& meta = context.p.meta;
  if (meta.captureWidth > 0 && meta.captureHeight > 0) {
    context.camAspect =
        static_cast<double>(meta.captureWidth) / static_cast<double>(meta.captureHeight);
  }
  context.cursorTrack = CursorTrack(context.p);
  context.track =
      buildTrack(context.segs, context.cursorTrack, duration, context.camera3D, context.ease);
  return context;
}

}  // namespace vesk::motion
