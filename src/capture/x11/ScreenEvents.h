#pragma once

#include <cstdint>
#include <optional>

#include "capture/x11/Connection.h"

namespace vesk::capture::x11 {

/// Something that changed on the screen.
struct ScreenEvent {
  enum class Kind : std::uint8_t {
    damaged,    ///< `subject` is the damage's number
    restacked,  ///< moved, resized, or moved in the order
    mapped,     ///< `subject` is a window, as in what follows
    unmapped,
    reparented,
    destroyed,
    property,
  };

  Kind kind;
  std::uint32_t subject = 0;
  std::uint32_t atom = 0;  ///< of a property
  bool operator==(const ScreenEvent&) const = default;
};

/// The events that have come in on a connection and concern the screen. Never waits.
class ScreenEvents {
 public:
  /// @param connection must outlive this; nobody else may read its events.
  explicit ScreenEvents(const Connection& connection);

  std::optional<ScreenEvent> next() const;

 private:
  const Connection& connection_;
  std::uint8_t damageEvent_;
};

}  // namespace vesk::capture::x11
