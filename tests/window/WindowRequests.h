#pragma once

#include <sys/types.h>

#include <cstdint>
#include <optional>

#include "capture/x11/Connection.h"

namespace vesk::app::test {

// What a desktop asks of the windows on it.

/// The window of a process that the window manager has under its care: one that is not hidden.
std::optional<std::uint32_t> windowOf(const capture::x11::Connection& connection, pid_t process);

/// As the button in the title bar does.
void close(const capture::x11::Connection& connection, std::uint32_t window);
void minimise(const capture::x11::Connection& connection, std::uint32_t window);

}  // namespace vesk::app::test
