#pragma once

#include <nlohmann/json.hpp>
#include <optional>
#include <utility>

namespace vesk::package {

/// An element that may fail to decode without harm to what stands around it: `value` is absent
/// then. It lets an array survive bad elements.
template <typename T>
struct Lossy {
  std::optional<T> value;

  /// @param decode gives an expected T.
  template <typename Decode>
  static Lossy decoded(const nlohmann::json& json, Decode decode) {
    auto element = decode(json);
    if (!element) return {};
    return {std::move(*element)};
  }

  bool operator==(const Lossy&) const = default;
};

}  // namespace vesk::package
