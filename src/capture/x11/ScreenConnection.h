#pragma once

#include <expected>
#include <string>

#include "capture/x11/Connection.h"

namespace vesk::capture::x11 {

/// A connection through which pictures of the screen can be had: the extensions for it are there
/// and the pixels have the form of `Pixels`.
std::expected<Connection, BackendError> openScreenConnection(const std::string& display);

}  // namespace vesk::capture::x11
