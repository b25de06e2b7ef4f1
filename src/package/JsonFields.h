#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace vesk::package {

/// Reads the fields of one JSON object into values of their types. A key that is absent or null
/// leaves its value as it was; 60.0 is an integer, a boolean is no number. The first value of the
/// wrong type is remembered and everything behind it is left alone, so that a decoder reads all
/// its fields in a row and asks once.
class JsonFields {
 public:
  /// @param object must outlive the reader; anything but an object is a failure at once.
  explicit JsonFields(const nlohmann::json& object);

  void read(std::string_view key, bool& value);
  void read(std::string_view key, std::int64_t& value);
  void read(std::string_view key, std::uint32_t& value);
  void read(std::string_view key, double& value);
  void read(std::string_view key, std::string& value);
  void read(std::string_view key, std::vector<double>& value);

  template <typename T>
  void read(std::string_view key, std::optional<T>& value) {
    if (find(key) == nullptr) return;
    T present{};
    read(key, present);
    value = std::move(present);
  }

  /// A string that `parse` turns into a value; nothing from it is a failure.
  /// @param meaning what the string should be, in the user's language
  template <typename Parse, typename T>
  void read(std::string_view key, T& value, std::string_view meaning, Parse parse) {
    if (find(key) == nullptr) return;
    std::string text;
    read(key, text);
    if (failure_) return;
    if (auto parsed = parse(text)) {
      value = *std::move(parsed);
    } else {
      failType(key, meaning);
    }
  }

  /// Lets `readFields` read the object under a key with a reader of its own.
  template <typename ReadFields>
  void readObject(std::string_view key, ReadFields readFields) {
    const auto* found = find(key);
    if (found == nullptr) return;
    JsonFields fields(*found);
    readFields(fields);
    if (fields.failure_) failInside(key, *fields.failure_);
  }

  /// Hands the elements of the array under a key to `readElement`, in their order.
  template <typename ReadElement>
  void readArray(std::string_view key, ReadElement readElement) {
    const auto* found = find(key);
    if (found == nullptr) return;
    if (!found->is_array()) return failType(key, "数组");
    for (const auto& element : *found) readElement(element);
  }

  /// An absent or null key is a failure.
  void require(std::string_view key);

  /// The value of a key, or null when it is absent or null, or when something failed before.
  const nlohmann::json* find(std::string_view key) const;

  /// Remembers a failure unless there is one already.
  void fail(std::string message);

  /// Names the first failure in the user's language, as a clause without its full stop.
  const std::optional<std::string>& failure() const { return failure_; }

 private:
  void failType(std::string_view key, std::string_view meaning);
  void failInside(std::string_view key, std::string_view cause);

  const nlohmann::json& object_;
  std::optional<std::string> failure_;
};

/// Adds the value under the key when there is one.
template <typename Optional>
void putIfPresent(nlohmann::json& object, const char* key, const Optional& value) {
  if (value) object[key] = *value;
}

/// The number as an integer when it is one in value, so also 60.0, and lies within 2^63.
std::optional<std::int64_t> integerFrom(double number);

}  // namespace vesk::package
