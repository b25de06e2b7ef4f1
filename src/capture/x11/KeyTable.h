#pragma once

#include <cstdint>
#include <optional>

#include "capture/KeyNames.h"

// How our numbers of keys relate to the display server's. Both tell a place on the keyboard, not
// what is printed there. Pure functions, for any thread.
namespace vesk::capture::x11 {

/// A key in the display server's numbering, which is the kernel's plus 8.
using XKeyCode = std::uint8_t;

/// Nothing for a key that we have no number for.
std::optional<KeyCode> keyCodeOf(XKeyCode key);

/// Nothing for a number of no key.
std::optional<XKeyCode> xKeyCodeOf(KeyCode keyCode);

/// Whether the key only changes what others do, such as shift and caps lock.
bool isModifierKey(KeyCode keyCode);

}  // namespace vesk::capture::x11
