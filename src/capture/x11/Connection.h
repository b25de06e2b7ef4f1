#pragma once

#include <cstdint>
#include <cstdlib>
#include <expected>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "capture/BackendError.h"

struct xcb_connection_t;
struct xcb_screen_t;

namespace vesk::capture::x11 {

/// What XCB hands out to be freed: replies, errors and events.
struct FreeReply {
  void operator()(void* reply) const noexcept { std::free(reply); }  // NOLINT: so XCB wants it
};
template <typename T>
using Reply = std::unique_ptr<T, FreeReply>;

/// Takes over what XCB has handed out.
template <typename T>
Reply<T> owned(T* reply) {
  return Reply<T>{reply};
}

/// A connection of our own to the display server. Threads may share it as far as XCB allows:
/// requests from any thread, but one thread alone reads its events. A server that dies makes
/// requests fail; it never ends the process.
class Connection {
 public:
  /// @param display such as ":0"; empty for that of the environment.
  [[nodiscard]] static std::expected<Connection, BackendError> open(
      const std::string& display = {});

  /// For XCB's functions; never null.
  [[nodiscard]] xcb_connection_t* get() const noexcept { return connection_.get(); }
  [[nodiscard]] const xcb_screen_t& screen() const noexcept { return *screen_; }
  [[nodiscard]] int screenNumber() const noexcept { return screenNumber_; }
  [[nodiscard]] std::uint32_t root() const noexcept;
  /// False once the server has gone.
  [[nodiscard]] bool isAlive() const noexcept;
  /// Makes everything fail from now on, also what another thread waits for at the moment.
  void abandon() const noexcept;

  /// The number of a name; 0 when the server has gone. Asks the server each time.
  [[nodiscard]] std::uint32_t atom(std::string_view name) const;
  /// The bytes of a window's property, at most 64 KiB of them; nothing when it is not there.
  [[nodiscard]] std::optional<std::string> property(std::uint32_t window, std::uint32_t name) const;
  /// The same for one that holds a number of 32 bits: its first.
  [[nodiscard]] std::optional<std::uint32_t> number(std::uint32_t window, std::uint32_t name) const;

 private:
  struct Disconnect {
    void operator()(xcb_connection_t* connection) const noexcept;
  };
  using Handle = std::unique_ptr<xcb_connection_t, Disconnect>;

  Connection(Handle connection, int screenNumber, const xcb_screen_t& screen);

  Handle connection_;
  int screenNumber_;
  const xcb_screen_t* screen_;  ///< owned by the connection
};

}  // namespace vesk::capture::x11
