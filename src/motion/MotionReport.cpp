#include "motion/MotionReport.h"

#include "motion/ReportSections.h"

namespace vesk::motion {

std::string reportText(const DumpCtx& context, const MotionCriteria& measured) {
  std::string text = summarySection(context) + levelSection(context) + segmentSection(context) +
                     positionSection(context) + curveSection(context);
  if (context.easeProfile && !context.segs.empty()) {
    text += profileSection(context);
  }
  return text + framingSection(context, measured) + criteriaSection(context, measured) +
         verdictSection(context, measured);
}

int reportExitCode(const DumpCtx& context, const MotionCriteria& measured) {
  return context.gating && !failures(context, measured).empty() ? 1 : 0;
}

}  // namespace vesk::motion
