#include "capture/x11/ModifierBits.h"

#include <xcb/xcb.h>
#include <xkbcommon/xkbcommon-keysyms.h>

#include <cstddef>

namespace vesk::capture::x11 {
namespace {

constexpr std::size_t bitCount = 8;

/// Where the bit that a symbol stands for is kept, or null.
std::uint16_t* placeOf(ModifierBits& bits, std::uint32_t symbol) {
  switch (symbol) {
    case XKB_KEY_Alt_L:
    case XKB_KEY_Alt_R:
      return &bits.option;
    case XKB_KEY_Super_L:
    case XKB_KEY_Super_R:
      return &bits.command;
    case XKB_KEY_Num_Lock:
      return &bits.numLock;
    case XKB_KEY_Scroll_Lock:
      return &bits.scrollLock;
    default:
      return nullptr;
  }
}

}  // namespace

ModifierFlags ModifierBits::flagsOf(std::uint32_t state) const {
  return ((state & XCB_MOD_MASK_SHIFT) != 0 ? shiftModifier : 0) |
         ((state & XCB_MOD_MASK_CONTROL) != 0 ? controlModifier : 0) |
         ((state & option) != 0 ? optionModifier : 0) |
         ((state & command) != 0 ? commandModifier : 0);
}

std::uint16_t ModifierBits::bitsOf(ModifierFlags flags) const {
  unsigned bits = 0;
  if ((flags & shiftModifier) != 0) bits |= XCB_MOD_MASK_SHIFT;
  if ((flags & controlModifier) != 0) bits |= XCB_MOD_MASK_CONTROL;
  if ((flags & optionModifier) != 0) bits |= option;
  if ((flags & commandModifier) != 0) bits |= command;
  return static_cast<std::uint16_t>(bits);
}

std::uint16_t ModifierBits::shortcutBits() const {
  return bitsOf(shiftModifier | hotKeyModifiers);
}

std::vector<std::uint16_t> ModifierBits::lockCombinations() const {
  std::vector<std::uint16_t> combinations{0};
  for (const std::uint16_t lock : {std::uint16_t{XCB_MOD_MASK_LOCK}, numLock, scrollLock}) {
    const std::size_t count = lock != 0 ? combinations.size() : 0;
    for (std::size_t i = 0; i < count; ++i) {
      combinations.push_back(static_cast<std::uint16_t>(combinations[i] | lock));
    }
  }
  return combinations;
}

ModifierBits modifierBits(
    std::span<const std::uint8_t> keysOfBits,
    const std::function<std::span<const std::uint32_t>(std::uint8_t key)>& symbolsOf) {
  ModifierBits bits;
  const std::size_t keysPerBit = keysOfBits.size() / bitCount;
  for (std::size_t i = 0; i < keysPerBit * bitCount; ++i) {
    if (keysOfBits[i] == 0) continue;
    for (const auto symbol : symbolsOf(keysOfBits[i])) {
      std::uint16_t* const place = placeOf(bits, symbol);
      if (place && *place == 0) *place = static_cast<std::uint16_t>(1U << (i / keysPerBit));
    }
  }
  return bits;
}

ModifierBits readModifierBits(const Connection& connection) {
  auto* const server = connection.get();
  const auto* const setup = xcb_get_setup(server);
  const std::uint8_t first = setup ? setup->min_keycode : 0;
  const std::uint8_t last = setup ? setup->max_keycode : 0;
  const auto modifierCookie = xcb_get_modifier_mapping(server);
  const auto symbolCookie =
      xcb_get_keyboard_mapping(server, first, static_cast<std::uint8_t>(last - first + 1));
  const auto modifiers = owned(xcb_get_modifier_mapping_reply(server, modifierCookie, nullptr));
  const auto symbols = owned(xcb_get_keyboard_mapping_reply(server, symbolCookie, nullptr));
  if (!modifiers || !symbols) return {};
  const std::size_t symbolsPerKey = symbols->keysyms_per_keycode;
  const std::span<const std::uint32_t> allSymbols{
      xcb_get_keyboard_mapping_keysyms(symbols.get()),
      static_cast<std::size_t>(xcb_get_keyboard_mapping_keysyms_length(symbols.get()))};
  return modifierBits(
      {xcb_get_modifier_mapping_keycodes(modifiers.get()),
       static_cast<std::size_t>(xcb_get_modifier_mapping_keycodes_length(modifiers.get()))},
      [&](std::uint8_t key) -> std::span<const std::uint32_t> {
        if (key < first || key > last) return {};
        return allSymbols.subspan((key - first) * symbolsPerKey, symbolsPerKey);
      });
}

}  // namespace vesk::capture::x11
