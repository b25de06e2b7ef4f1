#pragma once

#include <string>

#include "motion/DumpCtx.h"
#include "motion/MotionCriteria.h"

// The output of a motion report. Numbers are written the same under every locale.
namespace vesk::motion {

/// The textual report: the recording, what the inference and the track make of it, the criteria and
/// the verdict. Ends with a line feed.
std::string reportText(const DumpCtx& context, const MotionCriteria& measured);

/// The same as one JSON object and a line feed: the segments and coverage of each sensitivity, the
/// whole track, the criteria and the failures. Doubles read back exactly; single-precision values
/// are written as the double that they equal. A number that is not finite is written as null.
std::string reportJson(const DumpCtx& context, const MotionCriteria& measured);

/// 1 when the gate is asked for and something fails, else 0.
int reportExitCode(const DumpCtx& context, const MotionCriteria& measured);

}  // namespace vesk::motion
