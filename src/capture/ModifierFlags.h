#pragma once

#include <cstdint>
#include <string>

// The modifier keys as bits of one number, as they stand in a stored shortcut.
namespace vesk::capture {

using ModifierFlags = std::uint64_t;

inline constexpr ModifierFlags shiftModifier = 0x20000;
inline constexpr ModifierFlags controlModifier = 0x40000;
inline constexpr ModifierFlags optionModifier = 0x80000;    ///< Alt
inline constexpr ModifierFlags commandModifier = 0x100000;  ///< Super

/// The bits of a shortcut that mean something on every keyboard.
inline constexpr ModifierFlags shortcutModifiers = 0xFFFF0000;

/// One of these makes a key combination that nobody types in a text.
inline constexpr ModifierFlags hotKeyModifiers = commandModifier | optionModifier | controlModifier;

/// The symbols of the modifiers in the fixed order ⌃ ⌥ ⇧ ⌘.
std::string modifierSymbols(ModifierFlags flags);

}  // namespace vesk::capture
