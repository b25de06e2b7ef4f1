#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "capture/DisplayGeometry.h"
#include "capture/x11/Connection.h"

// What a window tells of itself. The texts are UTF-8, whatever the window has put there.
namespace vesk::capture::x11 {

std::optional<std::string> windowTitle(const Connection& connection, std::uint32_t window);

/// Nothing for a window that tells neither its application nor its process.
std::optional<ScreenWindow::Owner> windowOwner(const Connection& connection, std::uint32_t window);

/// A text that may be UTF-8 or, as in old times, Latin-1.
std::string utf8Text(std::string_view bytes);

}  // namespace vesk::capture::x11
