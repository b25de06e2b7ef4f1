#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "app/CommandContext.h"
#include "app/SelfCheck.h"
#include "capture/ScreenCaptureEngine.h"
#include "package/CaptureScope.h"

namespace vesk::app {

/// `--diag-static-tail`: whether a movie is as long as its take when the screen stood still at the
/// end.
int diagnoseStaticTail(const CommandContext& context);

/// The rectangle of "--region": the numbers among the pieces between commas, when there are four.
std::optional<package::Rect> looseRegion(std::string_view text);

/// The lines on what was seen of the screen.
std::string staticTailReport(const capture::ScreenCaptureEngine::Report& report);

/// What a take says of the tail.
/// @param gap seconds by which the movie is shorter than the take.
/// @param tail seconds between the last new picture and the last look at the screen.
CheckOutcome staticTailVerdict(double gap, double tail);

}  // namespace vesk::app
