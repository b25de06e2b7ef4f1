#pragma once

#include <optional>

#include "capture/Geometry.h"
#include "capture/x11/Connection.h"

namespace vesk::capture::x11 {

/// Where the pointer is; nothing when the server has gone.
std::optional<ScreenPoint> pointerPosition(const Connection& connection);

}  // namespace vesk::capture::x11
