#pragma once

#include <cstdint>

namespace vesk::capture::x11 {

/// An event of the server, to be looked at while it lasts.
class Event {
 public:
  /// @param event of XCB's, at least 32 bytes.
  explicit Event(const void* event) : event_{event} {}

  /// Of the protocol, or of an extension; whether a client has sent the event makes no difference.
  std::uint8_t type() const { return as<std::uint8_t>() & 0x7FU; }
  /// XCB's structure for events of this type.
  template <typename Structure>
  const Structure& as() const {
    return *static_cast<const Structure*>(event_);
  }

 private:
  const void* event_;
};

}  // namespace vesk::capture::x11
