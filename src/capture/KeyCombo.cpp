#include "capture/KeyCombo.h"

#include "capture/KeyNames.h"
#include "capture/UpperCase.h"

namespace vesk::capture {

std::string keyCombo(const KeyPress& key) {
  const auto modifiers = modifierSymbols(key.modifierFlags);
  if (const auto name = comboKeyName(key.keyCode)) return modifiers + std::string{*name};
  return modifiers + upperCased(key.characters);
}

}  // namespace vesk::capture
