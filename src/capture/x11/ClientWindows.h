#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "capture/x11/Connection.h"
#include "package/CaptureScope.h"

// The windows of applications.
namespace vesk::capture::x11 {

/// Those of the window manager's list, or where there is no window manager the ones on the screen
/// that a window manager would take care of; the uppermost first.
std::vector<std::uint32_t> clientWindows(const Connection& connection);

/// Whether a window is shown and is neither the desktop nor a panel.
bool isShownWindow(const Connection& connection, std::uint32_t window);

/// Where a window is on the screen with its decoration and borders; nothing when it has gone.
std::optional<package::Rect> frameOf(const Connection& connection, std::uint32_t window);

}  // namespace vesk::capture::x11
