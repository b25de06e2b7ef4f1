#pragma once

#include <cstdint>
#include <optional>
#include <vector>

#include "capture/x11/Connection.h"

namespace vesk::capture::x11 {

/// How many windows a window manager puts around an application's at most.
inline constexpr int deepestFrame = 2;

/// The windows directly inside another, the lowest first.
std::vector<std::uint32_t> childrenOf(const Connection& connection, std::uint32_t window);

/// The window that lies directly on the screen and holds this one: the window manager's frame, or
/// the window itself. Nothing when the window has gone or is the screen's own.
std::optional<std::uint32_t> toplevelOf(const Connection& connection, std::uint32_t window);

/// The application's window inside what lies on the screen, as a window manager marks it; nothing
/// when there is none.
std::optional<std::uint32_t> managedWindowIn(const Connection& connection, std::uint32_t toplevel);

/// Whether a window that lies on the screen shows a window of this process: it is one, or it is a
/// window manager's frame around one.
/// @param process as ownProcess() gives it.
bool belongsTo(const Connection& connection, std::uint32_t toplevel, std::int32_t process);

/// The process that made a window, as the server sees it, else as the window says.
std::optional<std::int32_t> processOf(const Connection& connection, std::uint32_t window);

/// This process, as the server sees it.
std::int32_t ownProcess(const Connection& connection);

}  // namespace vesk::capture::x11
