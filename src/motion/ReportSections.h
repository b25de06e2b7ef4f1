#pragma once

#include <string>

#include "motion/DumpCtx.h"
#include "motion/MotionCriteria.h"

// The sections of the textual report, in their order. Each one ends with a line feed.
namespace vesk::motion {

std::string summarySection(const DumpCtx& context);
std::string levelSection(const DumpCtx& context);
std::string segmentSection(const DumpCtx& context);
std::string positionSection(const DumpCtx& context);
std::string curveSection(const DumpCtx& context);
/// The push-in profile of the first segment; needs one.
std::string profileSection(const DumpCtx& context);
/// The framing each half second, and number 1.
std::string framingSection(const DumpCtx& context, const MotionCriteria& measured);
/// Numbers 2 to 10 with their details.
std::string criteriaSection(const DumpCtx& context, const MotionCriteria& measured);
std::string verdictSection(const DumpCtx& context, const MotionCriteria& measured);

}  // namespace vesk::motion
