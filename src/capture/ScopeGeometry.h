#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "capture/DisplayGeometry.h"
#include "package/CaptureScope.h"

// What a scope means on the displays there are. For any thread.
namespace vesk::capture {

std::optional<Display> displayWithID(std::uint32_t id, const DisplayGeometry& geometry);

/// The display that stands for all when none is named: the focused one, else the primary one.
std::optional<Display> defaultDisplay(const DisplayGeometry& geometry);

/// The display of a scope. A window belongs to the first display that it touches, else to the
/// focused one.
std::optional<Display> displayOf(const package::CaptureScope& scope,
                                 const DisplayGeometry& geometry);

/// The part of the screen that a scope records at the moment. Where a display or window cannot be
/// found that is the whole target.
package::Rect rectangleOf(const package::CaptureScope& scope, const Display& target,
                          const DisplayGeometry& geometry);

/// A scope as "meta.json" has it: the rectangle of a region, in global points while the program
/// works with it, is counted there from the bottom left of its own display. It stays as it is when
/// that display has gone.
/// @param displays the primary one first.
package::CaptureScope scopeToStore(const package::CaptureScope& scope,
                                   const std::vector<Display>& displays);

}  // namespace vesk::capture
