#pragma once

#include <vector>

#include "app/CommandLine.h"
#include "compositor/CompositeSettings.h"
#include "motion/ZoomSegment.h"
#include "package/RecordingProject.h"

namespace vesk::app {

/// How the headless export shows a recording.
struct ExportLook {
  compositor::CompositeSettings settings;     ///< with the camera track built
  std::vector<motion::ZoomSegment> segments;  ///< what the track was built from
};

/// The look of a default editing session, changed by the options of `--export`.
ExportLook exportLook(const CommandLine& commandLine, const package::RecordingProject& project);

}  // namespace vesk::app
