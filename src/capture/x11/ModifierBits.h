#pragma once

#include <cstdint>
#include <functional>
#include <span>
#include <vector>

#include "capture/ModifierFlags.h"
#include "capture/x11/Connection.h"

namespace vesk::capture::x11 {

/// Which of the display server's eight modifier bits are which. 0 for one that the keyboard lacks.
struct ModifierBits {
  std::uint16_t option = 0;
  std::uint16_t command = 0;
  std::uint16_t numLock = 0;
  std::uint16_t scrollLock = 0;
  bool operator==(const ModifierBits&) const = default;

  /// The modifiers of a shortcut that are set in a state of the keyboard.
  ModifierFlags flagsOf(std::uint32_t state) const;
  /// The bits of a shortcut's modifiers.
  std::uint16_t bitsOf(ModifierFlags flags) const;
  /// The bits of all four modifiers that a shortcut can have.
  std::uint16_t shortcutBits() const;
  /// Every combination of the locks, which a shortcut takes no notice of.
  std::vector<std::uint16_t> lockCombinations() const;
};

/// Finds the bits by the symbols on the keys.
/// @param keysOfBits for each of the eight bits the same number of keys; 0 for none.
ModifierBits modifierBits(
    std::span<const std::uint8_t> keysOfBits,
    const std::function<std::span<const std::uint32_t>(std::uint8_t key)>& symbolsOf);

/// Those of the display server; all 0 when it has gone.
ModifierBits readModifierBits(const Connection& connection);

}  // namespace vesk::capture::x11
