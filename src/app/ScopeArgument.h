#pragma once

#include <expected>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "capture/DisplayGeometry.h"
#include "package/CaptureScope.h"

namespace vesk::app {

/// The pieces of a text between its commas; empty ones are left out.
std::vector<std::string_view> piecesBetweenCommas(std::string_view text);

/// The rectangle of "region:x,y,w,h", in points from the bottom left of the primary display; blanks
/// around a number do not count. Nothing for a text without the prefix, an error for one whose four
/// numbers cannot be read.
std::expected<std::optional<package::Rect>, std::string> regionArgument(std::string_view text);

/// The scope of a region, on the display that it touches first, or of the default display.
package::CaptureScope scopeOf(const std::optional<package::Rect>& region,
                              const capture::DisplayGeometry& geometry);

/// A scope as the reports name it, such as "display(1)".
std::string inWords(const package::CaptureScope& scope);

}  // namespace vesk::app
