#include "capture/x11/ClientWindows.h"

#include <xcb/xcb.h>

#include <algorithm>
#include <cstring>
#include <string_view>

#include "capture/x11/WindowTree.h"

namespace vesk::capture::x11 {
namespace {

std::vector<std::uint32_t> numbers(const Connection& connection, std::uint32_t window,
                                   std::string_view property) {
  const auto bytes = connection.property(window, connection.atom(property)).value_or("");
  std::vector<std::uint32_t> numbers(bytes.size() / sizeof(std::uint32_t));
  // An empty vector's data may be null, which memcpy may not be given.
  if (!numbers.empty()) {
    std::memcpy(numbers.data(), bytes.data(), numbers.size() * sizeof(std::uint32_t));
  }
  return numbers;
}

Reply<xcb_get_window_attributes_reply_t> attributes(const Connection& connection,
                                                    std::uint32_t window) {
  return owned(xcb_get_window_attributes_reply(
      connection.get(), xcb_get_window_attributes(connection.get(), window), nullptr));
}

/// A window manager that dies leaves its list behind, so it must show that it lives: by a window
/// that bears its own number.
bool hasWindowManager(const Connection& connection) {
  constexpr std::string_view check = "_NET_SUPPORTING_WM_CHECK";
  const auto window = numbers(connection, connection.root(), check);
  return !window.empty() && numbers(connection, window.front(), check) == window;
}

/// Windows that applications put up without a window manager's doing are menus and the like.
bool isManageable(const Connection& connection, std::uint32_t toplevel) {
  const auto found = attributes(connection, toplevel);
  return found && found->override_redirect == 0 && found->_class == XCB_WINDOW_CLASS_INPUT_OUTPUT;
}

std::vector<std::uint32_t> listedClients(const Connection& connection) {
  auto clients = numbers(connection, connection.root(), "_NET_CLIENT_LIST_STACKING");
  if (clients.empty()) clients = numbers(connection, connection.root(), "_NET_CLIENT_LIST");
  return clients;
}

/// The application's window in what lies on the screen: every window manager marks it.
std::optional<std::uint32_t> markedWindowIn(const Connection& connection, std::uint32_t window,
                                            int depth) {
  if (connection.property(window, connection.atom("WM_STATE"))) return window;
  if (depth == deepestFrame) return std::nullopt;
  for (const auto child : childrenOf(connection, window)) {
    if (const auto found = markedWindowIn(connection, child, depth + 1)) return found;
  }
  return std::nullopt;
}

std::vector<std::uint32_t> unlistedClients(const Connection& connection) {
  std::vector<std::uint32_t> clients;
  for (const auto toplevel : childrenOf(connection, connection.root())) {
    if (const auto client = markedWindowIn(connection, toplevel, 0)) {
      clients.push_back(*client);
    } else if (isManageable(connection, toplevel)) {
      clients.push_back(toplevel);
    }
  }
  return clients;
}

}  // namespace

std::vector<std::uint32_t> clientWindows(const Connection& connection) {
  auto clients =
      hasWindowManager(connection) ? listedClients(connection) : unlistedClients(connection);
  std::ranges::reverse(clients);
  return clients;
}

bool isShownWindow(const Connection& connection, std::uint32_t window) {
  const auto found = attributes(connection, window);
  if (!found || found->map_state != XCB_MAP_STATE_VIEWABLE) return false;
  const auto desktop = connection.atom("_NET_WM_WINDOW_TYPE_DESKTOP");
  const auto panel = connection.atom("_NET_WM_WINDOW_TYPE_DOCK");
  return std::ranges::none_of(numbers(connection, window, "_NET_WM_WINDOW_TYPE"),
                              [&](std::uint32_t type) { return type == desktop || type == panel; });
}

std::optional<package::Rect> frameOf(const Connection& connection, std::uint32_t window) {
  const auto toplevel = toplevelOf(connection, window);
  if (!toplevel) return std::nullopt;
  const auto geometry = owned(xcb_get_geometry_reply(
      connection.get(), xcb_get_geometry(connection.get(), *toplevel), nullptr));
  if (!geometry) return std::nullopt;
  const int borders = 2 * geometry->border_width;
  return package::Rect{.x = static_cast<double>(geometry->x),
                       .y = static_cast<double>(geometry->y),
                       .width = static_cast<double>(geometry->width + borders),
                       .height = static_cast<double>(geometry->height + borders)};
}

}  // namespace vesk::capture::x11
