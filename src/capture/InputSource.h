#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <variant>

#include "capture/BackendError.h"
#include "capture/Geometry.h"
#include "capture/KeyNames.h"
#include "capture/Listening.h"
#include "capture/ModifierFlags.h"
#include "package/RecordedEvent.h"

namespace vesk::capture {

// Times are seconds of the take's clock at which the device reported the event.

struct ButtonChange {
  double time = 0;
  package::RecordedEvent::Button button = package::RecordedEvent::Button::left;
  bool isPressed = false;
  std::int64_t clickCount = 0;  ///< of a press: 1 for a single click, 2 for a double click, …
};

struct ScrollStep {
  double time = 0;
  double dx = 0;  ///< positive to the left, as the page moves to the right
  double dy = 0;  ///< positive upwards, as the page moves down
};

struct KeyPress {
  double time = 0;
  KeyCode keyCode = 0;
  ModifierFlags modifierFlags = 0;
  /// What the key types with no modifier but shift; empty for a key that types nothing.
  std::string characters;
};

using InputEvent = std::variant<ButtonChange, ScrollStep, KeyPress>;

/// The user's mouse and keyboard, in whatever application they are used.
class InputSource {
 public:
  using Callback = std::function<void(const InputEvent&)>;

  virtual ~InputSource() = default;

  /// Calls back on a thread of the source's own. Movements of the pointer are no events.
  /// @param includesKeys otherwise the keyboard is not listened to at all.
  virtual std::expected<std::unique_ptr<Listening>, BackendError> listen(bool includesKeys,
                                                                         Callback callback) = 0;

  /// Where the pointer is now, or nothing when that cannot be told. Any thread, and quick enough
  /// for 120 calls a second.
  virtual std::optional<ScreenPoint> pointerPosition() const = 0;

  /// Whether the user is typing a secret, so that keys are nobody's business. Any thread; does not
  /// wait.
  virtual bool isSecureInput() const = 0;
};

}  // namespace vesk::capture
