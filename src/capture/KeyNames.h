#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace vesk::capture {

/// A key by its place on the keyboard, in the numbering of stored shortcuts: 18 is the digit 1,
/// 36 the return key.
using KeyCode = std::uint16_t;

/// The name of a key that types no letter of its own in the log's key combinations, such as "⏎".
std::optional<std::string_view> comboKeyName(KeyCode keyCode);

/// What keys are called in the words of the user.
class KeyNames {
 public:
  /// What a key types without modifiers on the current keyboard layout; empty for nothing.
  using LayoutLookup = std::function<std::string(KeyCode)>;

  explicit KeyNames(LayoutLookup layout);

  /// The name of a key with a fixed name, else what it types, in upper case, else "键" and its
  /// code.
  std::string name(KeyCode keyCode) const;

 private:
  LayoutLookup layout_;
};

}  // namespace vesk::capture
