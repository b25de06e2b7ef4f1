#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "capture/KeyNames.h"
#include "capture/ModifierFlags.h"

namespace vesk::capture {

/// A key combination that works in every application.
struct Shortcut {
  KeyCode keyCode = 0;
  ModifierFlags modifierFlags = 0;  ///< within `shortcutModifiers`
  bool operator==(const Shortcut&) const = default;
};

inline constexpr Shortcut defaultZoomIn{.keyCode = 18, .modifierFlags = optionModifier};
inline constexpr Shortcut defaultZoomOut{.keyCode = 19, .modifierFlags = optionModifier};

/// Whether the combination may be taken away from all other applications: it needs one of the
/// modifiers with which nobody types; shift alone is none.
bool isHotKey(const Shortcut& shortcut);

/// The combination in words, such as "⌥1".
std::string displayString(const Shortcut& shortcut, const KeyNames& names);

/// {"keyCode":18,"modifierFlags":524288}
std::string encodeShortcut(const Shortcut& shortcut);

/// Nothing when the text is no shortcut. Bits of no modifier are dropped.
std::optional<Shortcut> decodeShortcut(std::string_view json);

}  // namespace vesk::capture
