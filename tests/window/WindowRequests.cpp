#include "window/WindowRequests.h"

#include <xcb/xcb.h>

#include <array>
#include <bit>
#include <cstring>
#include <string>
#include <vector>

namespace vesk::app::test {
namespace {

using capture::x11::Connection;

std::vector<std::uint32_t> managedWindows(const Connection& connection) {
  const std::string bytes =
      connection.property(connection.root(), connection.atom("_NET_CLIENT_LIST")).value_or("");
  std::vector<std::uint32_t> windows(bytes.size() / sizeof(std::uint32_t));
  std::memcpy(windows.data(), bytes.data(), windows.size() * sizeof(std::uint32_t));
  return windows;
}

struct Message {
  std::uint32_t window = 0;
  std::uint32_t type = 0;
  std::uint32_t value = 0;
};

void send(const Connection& connection, std::uint32_t receiver, std::uint32_t mask,
          const Message& message) {
  xcb_client_message_event_t event{};
  event.response_type = XCB_CLIENT_MESSAGE;
  event.format = 32;
  event.window = message.window;
  event.type = message.type;
  event.data.data32[0] = message.value;
  const auto bytes = std::bit_cast<std::array<char, sizeof event>>(event);
  xcb_send_event(connection.get(), 0, receiver, mask, bytes.data());
  xcb_flush(connection.get());
}

}  // namespace

std::optional<std::uint32_t> windowOf(const Connection& connection, pid_t process) {
  const std::uint32_t processOf = connection.atom("_NET_WM_PID");
  for (const std::uint32_t window : managedWindows(connection)) {
    if (connection.number(window, processOf) == static_cast<std::uint32_t>(process)) return window;
  }
  return std::nullopt;
}

void close(const Connection& connection, std::uint32_t window) {
  send(connection, window, XCB_EVENT_MASK_NO_EVENT,
       {.window = window,
        .type = connection.atom("WM_PROTOCOLS"),
        .value = connection.atom("WM_DELETE_WINDOW")});
}

void minimise(const Connection& connection, std::uint32_t window) {
  constexpr std::uint32_t iconicState = 3;
  send(connection, connection.root(),
       XCB_EVENT_MASK_SUBSTRUCTURE_NOTIFY | XCB_EVENT_MASK_SUBSTRUCTURE_REDIRECT,
       {.window = window, .type = connection.atom("WM_CHANGE_STATE"), .value = iconicState});
}

}  // namespace vesk::app::test
