#pragma once

#include <cstddef>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace vesk::app {

/// The arguments of the process, the program's own path included. Whatever nobody asks for is
/// ignored, and so is a value that does not suit its flag: the default holds then.
class CommandLine {
 public:
  explicit CommandLine(std::span<const char* const> arguments);

  /// Whether any argument is exactly this flag.
  bool has(std::string_view flag) const;

  /// What stands behind the first occurrence of the flag, whatever it looks like; nothing when the
  /// flag is absent or the last argument. Valid as long as this object.
  std::optional<std::string_view> value(std::string_view flag) const;
  /// The same for the second argument behind the flag.
  std::optional<std::string_view> secondValue(std::string_view flag) const;

  /// The flag's value as a number.
  std::optional<double> number(std::string_view flag) const;

 private:
  std::optional<std::string_view> behind(std::string_view flag, std::ptrdiff_t steps) const;

  std::vector<std::string> arguments_;
};

/// The finite number that the whole string is, the same under every locale; nothing for anything
/// else, blanks around it and the empty string included.
std::optional<double> parseNumber(std::string_view text);

}  // namespace vesk::app
