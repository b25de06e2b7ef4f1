#pragma once

#include <memory>
#include <optional>
#include <string>
#include <string_view>

namespace vesk::package {

/// A text or none, a value like std::optional<std::string> in the size of a pointer: for records
/// that come by the hundred thousand and rarely have the text.
class OptionalText {
 public:
  OptionalText() = default;
  OptionalText(std::nullopt_t) {}  // NOLINT(google-explicit-constructor): reads like an optional
  OptionalText(std::string_view text)  // NOLINT(google-explicit-constructor)
      : text_(std::make_unique<const std::string>(text)) {}
  OptionalText(const char* text)  // NOLINT(google-explicit-constructor)
      : OptionalText(std::string_view(text)) {}
  OptionalText(const std::string& text)  // NOLINT(google-explicit-constructor)
      : OptionalText(std::string_view(text)) {}

  OptionalText(const OptionalText& other) : text_(copyOf(other)) {}
  OptionalText(OptionalText&&) noexcept = default;
  OptionalText& operator=(const OptionalText& other) {
    text_ = copyOf(other);
    return *this;
  }
  OptionalText& operator=(OptionalText&&) noexcept = default;
  ~OptionalText() = default;

  bool has_value() const { return text_ != nullptr; }
  explicit operator bool() const { return has_value(); }
  /// Only when there is a text.
  const std::string& operator*() const { return *text_; }
  const std::string* operator->() const { return text_.get(); }
  std::string value_or(std::string_view other) const {
    return has_value() ? *text_ : std::string(other);
  }
  void reset() { text_.reset(); }

  bool operator==(const OptionalText& other) const {
    return has_value() == other.has_value() && (!has_value() || *text_ == *other.text_);
  }

 private:
  static std::unique_ptr<const std::string> copyOf(const OptionalText& other) {
    return other.has_value() ? std::make_unique<const std::string>(*other) : nullptr;
  }

  std::unique_ptr<const std::string> text_;
};

}  // namespace vesk::package
