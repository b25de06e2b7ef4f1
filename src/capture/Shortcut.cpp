#include "capture/Shortcut.h"

#include <cstdint>
#include <limits>

#include "package/JsonFields.h"
#include "package/JsonText.h"

namespace vesk::capture {

bool isHotKey(const Shortcut& shortcut) {
  return (shortcut.modifierFlags & hotKeyModifiers) != 0;
}

std::string displayString(const Shortcut& shortcut, const KeyNames& names) {
  return modifierSymbols(shortcut.modifierFlags) + names.name(shortcut.keyCode);
}

std::string encodeShortcut(const Shortcut& shortcut) {
  return nlohmann::json{{"keyCode", shortcut.keyCode}, {"modifierFlags", shortcut.modifierFlags}}
      .dump();
}

std::optional<Shortcut> decodeShortcut(std::string_view json) {
  const auto object = package::parseJson(json);
  if (!object) return std::nullopt;
  package::JsonFields fields(*object);
  fields.require("keyCode");
  fields.require("modifierFlags");
  std::int64_t keyCode = 0;
  std::int64_t modifierFlags = 0;
  fields.read("keyCode", keyCode);
  fields.read("modifierFlags", modifierFlags);
  const bool isKey = keyCode >= 0 && keyCode <= std::numeric_limits<KeyCode>::max();
  if (fields.failure() || !isKey || modifierFlags < 0) return std::nullopt;
  return Shortcut{.keyCode = static_cast<KeyCode>(keyCode),
                  .modifierFlags = static_cast<ModifierFlags>(modifierFlags) & shortcutModifiers};
}

}  // namespace vesk::capture
