#pragma once

#include <array>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>

#include "capture/BackendError.h"
#include "capture/ModifierFlags.h"
#include "capture/x11/Connection.h"
#include "capture/x11/Event.h"
#include "capture/x11/KeyRepeat.h"
#include "capture/x11/KeyTable.h"
#include "capture/x11/ModifierBits.h"

struct xkb_context;
struct xkb_keymap;
struct xkb_state;

namespace vesk::capture::x11 {

/// The user's keyboard: what its keys type, which modifiers are down, how keys repeat. It follows
/// changes by the events of its connection. To be used by one thread at a time.
class Keyboard {
 public:
  /// @param connection must outlive the keyboard.
  static std::expected<Keyboard, BackendError> open(const Connection& connection);

  /// Takes in an event; one that tells nothing of the keyboard has no effect.
  void follow(const Event& event);

  ModifierFlags modifierFlags();
  /// What a key types with the shift that is down now and no other modifier; empty for nothing. A
  /// key that does something else, such as an arrow or F1, has a character of the private use area.
  std::string typed(KeyCode keyCode);
  /// The character that a key types alone; empty for a key that types none.
  std::string typedAlone(KeyCode keyCode);
  /// Nothing for a key that does not repeat.
  std::optional<RepeatRate> repeatRate(XKeyCode key);

  /// Makes the server tell a connection of a held key's repeats as presses without releases in
  /// between.
  static void leaveOutFalseReleases(const Connection& connection);

 private:
  struct Release {
    void operator()(xkb_context* context) const noexcept;
    void operator()(xkb_keymap* keymap) const noexcept;
    void operator()(xkb_state* state) const noexcept;
  };

  Keyboard(const Connection& connection, std::uint8_t firstEvent);
  void selectEvents() const;
  /// Reads what has changed, once somebody wants to know.
  void refresh();
  void readLayout();
  void readState();
  void readRepeats();
  std::uint32_t symbol(XKeyCode key, std::uint32_t modifiers) const;
  std::string text(XKeyCode key, std::uint32_t modifiers) const;

  const Connection* connection_;
  std::uint8_t firstEvent_;  ///< the number of the extension's events
  std::unique_ptr<xkb_context, Release> context_;
  std::unique_ptr<xkb_keymap, Release> keymap_;
  std::unique_ptr<xkb_state, Release> state_;  ///< to look keys up with
  ModifierBits bits_;
  std::uint32_t modifiers_ = 0;
  std::uint32_t group_ = 0;
  std::optional<RepeatRate> rate_;
  std::array<std::uint8_t, 32> repeatingKeys_{};  ///< a bit for each
  bool isStale_ = true;
};

}  // namespace vesk::capture::x11
