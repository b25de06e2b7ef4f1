#pragma once

#include <cstdint>
#include <map>
#include <optional>
#include <vector>

#include "capture/x11/Connection.h"
#include "capture/x11/Event.h"
#include "capture/x11/ScrollAxes.h"

namespace vesk::capture::x11 {

/// What a device did, whoever has grabbed it.
struct RawInput {
  enum class Kind : std::uint8_t {
    keyPress,
    keyRelease,
    buttonPress,
    buttonRelease,
    motion,
    devicesChanged,  ///< one came, went or looks different now; nothing else is told
  };

  Kind kind = Kind::motion;
  std::uint16_t device = 0;
  std::uint32_t stamp = 0;   ///< milliseconds of the server
  std::uint32_t detail = 0;  ///< the key, or the button before the user's mapping of buttons
  std::vector<ValuatorValue> values;
};

/// The server's extension for input devices, version 2, on one connection.
class RawInputs {
 public:
  /// Nothing when the server has no such extension.
  /// @param connection must outlive the object.
  static std::optional<RawInputs> open(const Connection& connection);

  /// Asks for events of buttons and devices, of keys and movements only where wanted.
  void select(bool includesKeys, bool includesMotion) const;

  /// The axes of all devices that have some.
  std::map<std::uint16_t, ScrollAxes> scrollAxes() const;

  /// Nothing for an event of another kind.
  std::optional<RawInput> read(const Event& event) const;

 private:
  RawInputs(const Connection& connection, std::uint8_t extension)
      : connection_{&connection}, extension_{extension} {}

  const Connection* connection_;
  std::uint8_t extension_;
};

}  // namespace vesk::capture::x11
