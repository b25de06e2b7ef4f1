#pragma once

#include <string>

#include "capture/InputSource.h"

namespace vesk::capture {

/// A key press in the words of the log: the modifiers in the order ⌃ ⌥ ⇧ ⌘ and then the key, "⇧⌘S".
/// A key without a name that types nothing gives the modifiers alone.
std::string keyCombo(const KeyPress& key);

}  // namespace vesk::capture
