#include "capture/x11/Connection.h"

#include <sys/socket.h>
#include <xcb/xcb.h>

#include <cstring>
#include <utility>

namespace vesk::capture::x11 {
namespace {

constexpr std::uint32_t longestProperty = 64 * 1024 / 4;  // in units of four bytes

const xcb_screen_t* screenNumbered(xcb_connection_t* connection, int number) {
  auto screens = xcb_setup_roots_iterator(xcb_get_setup(connection));
  while (number-- > 0 && screens.rem > 0) xcb_screen_next(&screens);
  return screens.rem > 0 ? screens.data : nullptr;
}

}  // namespace

void Connection::Disconnect::operator()(xcb_connection_t* connection) const noexcept {
  xcb_disconnect(connection);
}

std::expected<Connection, BackendError> Connection::open(const std::string& display) {
  int number = 0;
  Handle connection{xcb_connect(display.empty() ? nullptr : display.c_str(), &number)};
  const xcb_screen_t* const screen = xcb_connection_has_error(connection.get()) == 0
                                         ? screenNumbered(connection.get(), number)
                                         : nullptr;
  if (!screen) return std::unexpected(BackendError{"连接不上 X 显示服务器"});
  return Connection{std::move(connection), number, *screen};
}

Connection::Connection(Handle connection, int screenNumber, const xcb_screen_t& screen)
    : connection_{std::move(connection)}, screenNumber_{screenNumber}, screen_{&screen} {}

std::uint32_t Connection::root() const noexcept {
  return screen_->root;
}

bool Connection::isAlive() const noexcept {
  return xcb_connection_has_error(get()) == 0;
}

void Connection::abandon() const noexcept {
  ::shutdown(xcb_get_file_descriptor(get()), SHUT_RD);
}

std::uint32_t Connection::atom(std::string_view name) const {
  const auto cookie =
      xcb_intern_atom(get(), 0, static_cast<std::uint16_t>(name.size()), name.data());
  const auto reply = owned(xcb_intern_atom_reply(get(), cookie, nullptr));
  return reply ? reply->atom : 0;
}

std::optional<std::string> Connection::property(std::uint32_t window, std::uint32_t name) const {
  const auto cookie =
      xcb_get_property(get(), 0, window, name, XCB_GET_PROPERTY_TYPE_ANY, 0, longestProperty);
  xcb_generic_error_t* error = nullptr;
  const auto reply = owned(xcb_get_property_reply(get(), cookie, &error));
  const auto ownedError = owned(error);
  if (!reply || reply->type == XCB_ATOM_NONE) return std::nullopt;
  return std::string(static_cast<const char*>(xcb_get_property_value(reply.get())),
                     static_cast<std::size_t>(xcb_get_property_value_length(reply.get())));
}

std::optional<std::uint32_t> Connection::number(std::uint32_t window, std::uint32_t name) const {
  const auto bytes = property(window, name);
  std::uint32_t value = 0;
  if (!bytes || bytes->size() < sizeof value) return std::nullopt;
  std::memcpy(&value, bytes->data(), sizeof value);
  return value;
}

}  // namespace vesk::capture::x11
