#include "capture/x11/PointerPosition.h"

#include <xcb/xcb.h>

namespace vesk::capture::x11 {

std::optional<ScreenPoint> pointerPosition(const Connection& connection) {
  const auto pointer = owned(xcb_query_pointer_reply(
      connection.get(), xcb_query_pointer(connection.get(), connection.root()), nullptr));
  if (!pointer) return std::nullopt;
  return ScreenPoint{.x = static_cast<double>(pointer->root_x),
                     .y = static_cast<double>(pointer->root_y)};
}

}  // namespace vesk::capture::x11
