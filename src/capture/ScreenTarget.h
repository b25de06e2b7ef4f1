#pragma once

#include <expected>

#include "capture/CaptureError.h"
#include "capture/DisplayGeometry.h"
#include "capture/ScreenSource.h"
#include "package/CaptureScope.h"

namespace vesk::capture {

/// What a scope asks of the screen as it is now. A display that has gone is replaced by the first
/// one, a region of it by the whole of that; a window that has gone, or no display, is an error.
std::expected<ScreenRequest, CaptureError> screenTarget(const package::CaptureScope& scope, int fps,
                                                        const DisplayGeometry& geometry);

}  // namespace vesk::capture
