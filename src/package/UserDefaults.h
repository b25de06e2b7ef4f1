#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <variant>

#include "package/PackageError.h"

namespace vesk::package {

/// Small persistent settings under dotted keys, kept in "defaults.json" under
/// $XDG_CONFIG_HOME/vesk (or ~/.config/vesk). Each change is written through atomically, on top of
/// what the file holds at that moment, so that the keys of another running instance survive; of
/// two writes to one key the last wins. A change that fails leaves the settings as they were.
/// A damaged file is set aside as "defaults.json.corrupt-<number>" with a log entry and counts as
/// empty. Not thread-safe: one owner, one thread.
class UserDefaults {
 public:
  /// @param file the JSON file; it and its directory need not exist.
  explicit UserDefaults(std::filesystem::path file);

  /// The file under the user's configuration directory.
  static std::filesystem::path defaultFile();

  /// The value under a key, or nothing when the key is absent or holds another type.
  std::optional<std::string> string(std::string_view key) const;
  std::optional<bool> boolean(std::string_view key) const;
  std::optional<double> number(std::string_view key) const;

  /// A string must be UTF-8 and a number finite.
  std::expected<void, PackageError> set(std::string_view key, std::string_view value);
  std::expected<void, PackageError> set(std::string_view key, bool value);
  std::expected<void, PackageError> set(std::string_view key, double value);
  /// A literal would otherwise turn into a bool.
  std::expected<void, PackageError> set(std::string_view key, const char* value);
  std::expected<void, PackageError> remove(std::string_view key);

 private:
  /// A value of a type that no accessor reads, kept as JSON text for whoever wrote it.
  struct OtherJSON {
    std::string text;
  };
  using Value = std::variant<bool, double, std::string, OtherJSON>;
  using Values = std::map<std::string, Value, std::less<>>;

  static std::optional<Values> parsed(std::string_view text);
  static std::optional<std::string> printed(const Values& values);
  template <typename T>
  std::optional<T> value(std::string_view key) const;
  std::expected<Values, PackageError> read() const;
  std::expected<void, PackageError> setValue(std::string_view key, Value value);
  std::expected<void, PackageError> write(Values values);

  std::filesystem::path file_;
  Values values_;
};

}  // namespace vesk::package
