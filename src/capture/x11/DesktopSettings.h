#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

#include "capture/x11/ClickCounter.h"
#include "capture/x11/Connection.h"

namespace vesk::capture::x11 {

/// A number among the desktop's settings, such as "Net/DoubleClickTime"; nothing when it is not
/// there or the bytes are no settings. Pure.
/// @param bytes of the property _XSETTINGS_SETTINGS as the XSETTINGS registry describes it.
/// Source: Owen Taylor, "XSETTINGS - cross toolkit configuration proposal", freedesktop.org.
std::optional<std::int32_t> settingNumber(std::string_view bytes, std::string_view name);

/// The desktop's, or the usual one where it sets none.
DoubleClick readDoubleClick(const Connection& connection);

}  // namespace vesk::capture::x11
