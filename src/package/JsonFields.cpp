#include "package/JsonFields.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <nlohmann/json.hpp>

namespace vesk::package {

namespace {

std::optional<std::int64_t> integerIn(const nlohmann::json& value) {
  if (value.is_number_float()) return integerFrom(value.get<double>());
  if (value.is_number_unsigned()) {
    const auto number = value.get<std::uint64_t>();
    if (!std::in_range<std::int64_t>(number)) return std::nullopt;
    return static_cast<std::int64_t>(number);
  }
  if (value.is_number_integer()) return value.get<std::int64_t>();
  return std::nullopt;
}

}  // namespace

std::optional<std::int64_t> integerFrom(double number) {
  constexpr double limit = 0x1p63;
  if (number != std::trunc(number) || std::abs(number) >= limit) return std::nullopt;
  return static_cast<std::int64_t>(number);
}

JsonFields::JsonFields(const nlohmann::json& object) : object_(object) {
  if (!object.is_object()) fail("内容不是一个 JSON 对象");
}

void JsonFields::read(std::string_view key, bool& value) {
  const auto* found = find(key);
  if (found == nullptr) return;
  if (!found->is_boolean()) return failType(key, "true 或 false");
  value = found->get<bool>();
}

void JsonFields::read(std::string_view key, std::int64_t& value) {
  const auto* found = find(key);
  if (found == nullptr) return;
  const auto number = integerIn(*found);
  if (!number) return failType(key, "整数");
  value = *number;
}

void JsonFields::read(std::string_view key, std::uint32_t& value) {
  const auto* found = find(key);
  if (found == nullptr) return;
  const auto number = integerIn(*found);
  if (!number || !std::in_range<std::uint32_t>(*number)) {
    return failType(key, "0 到 4294967295 之间的整数");
  }
  value = static_cast<std::uint32_t>(*number);
}

void JsonFields::read(std::string_view key, double& value) {
  const auto* found = find(key);
  if (found == nullptr) return;
  if (!found->is_number()) return failType(key, "数字");
  value = found->get<double>();
}

void JsonFields::read(std::string_view key, std::string& value) {
  const auto* found = find(key);
  if (found == nullptr) return;
  if (!found->is_string()) return failType(key, "字符串");
  value = found->get_ref<const std::string&>();
}

void JsonFields::read(std::string_view key, std::vector<double>& value) {
  const auto* found = find(key);
  if (found == nullptr) return;
  const auto isNumber = [](const nlohmann::json& element) { return element.is_number(); };
  if (!found->is_array() || !std::ranges::all_of(*found, isNumber)) {
    return failType(key, "数字的数组");
  }
  value = found->get<std::vector<double>>();
}

void JsonFields::require(std::string_view key) {
  if (find(key) == nullptr) fail(fmt::format("缺少字段“{}”", key));
}

const nlohmann::json* JsonFields::find(std::string_view key) const {
  if (failure_) return nullptr;
  const auto found = object_.find(key);
  if (found == object_.end() || found->is_null()) return nullptr;
  return &*found;
}

void JsonFields::fail(std::string message) {
  if (!failure_) failure_ = std::move(message);
}

void JsonFields::failType(std::string_view key, std::string_view meaning) {
  fail(fmt::format("字段“{}”应为{}", key, meaning));
}

void JsonFields::failInside(std::string_view key, std::string_view cause) {
  fail(fmt::format("“{}”中的{}", key, cause));
}

}  // namespace vesk::package
