#include "capture/ModifierFlags.h"

namespace vesk::capture {

std::string modifierSymbols(ModifierFlags flags) {
  std::string symbols;
  if ((flags & controlModifier) != 0) symbols += "⌃";
  if ((flags & optionModifier) != 0) symbols += "⌥";
  if ((flags & shiftModifier) != 0) symbols += "⇧";
  if ((flags & commandModifier) != 0) symbols += "⌘";
  return symbols;
}

}  // namespace vesk::capture
