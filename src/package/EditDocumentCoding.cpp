#include "package/EditDocumentCoding.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <concepts>
#include <cstdint>
#include <nlohmann/json.hpp>
#include <optional>
#include <tuple>
#include <utility>
#include <vector>

#include "package/EditDocumentFields.h"
#include "package/JsonFields.h"
#include "package/JsonText.h"
#include "package/Lossy.h"

namespace vesk::package {

namespace {

using Segment = EditDocument::Segment;
using Waypoint = EditDocument::Segment::Waypoint;

std::unexpected<PackageError> malformedEdits(std::string_view cause) {
  return std::unexpected(PackageError{PackageError::Kind::malformed,
                                      fmt::format("编辑记录“edit.json”已损坏：{}。", cause)});
}

std::unexpected<PackageError> unencodable(std::string_view cause) {
  return std::unexpected(PackageError{PackageError::Kind::malformed,
                                      fmt::format("编辑记录“edit.json”无法保存：{}。", cause)});
}

template <typename Record>
concept EditRecord = requires { std::tuple_size<decltype(editFields<Record>)>::value; };

template <EditRecord Record>
void readRecord(JsonFields& json, Record& record);

/// The value of a key whose type JsonFields knows.
template <typename Value>
void readValue(JsonFields& json, std::string_view key, Value& value) {
  json.read(key, value);
}

template <EditRecord Record>
void readValue(JsonFields& json, std::string_view key, Record& record) {
  json.readObject(key, [&](JsonFields& fields) { readRecord(fields, record); });
}

template <EditRecord Record>
std::expected<Record, std::string> decodeRecord(const nlohmann::json& json) {
  JsonFields fields(json);
  Record record;
  readRecord(fields, record);
  if (fields.failure()) return std::unexpected(*fields.failure());
  return record;
}

/// An array whose bad elements lose only themselves.
template <EditRecord Record>
void readValue(JsonFields& json, std::string_view key, std::vector<Record>& records) {
  json.readArray(key, [&](const nlohmann::json& element) {
    auto lossy = Lossy<Record>::decoded(element, decodeRecord<Record>);
    if (lossy.value) records.push_back(*std::move(lossy.value));
  });
}

template <EditRecord Record>
void readValue(JsonFields& json, std::string_view key,
               std::optional<std::vector<Record>>& records) {
  if (json.find(key) != nullptr) readValue(json, key, records.emplace());
}

template <EditRecord Record, typename Value>
void readField(JsonFields& json, const EditField<Record, Value>& field, Record& record) {
  if (field.isRequired) json.require(field.key);
  readValue(json, field.key, record.*field.member);
}

/// The name that a segment without one gets from its start.
std::string defaultId(double start) {
  // Formatted as a double, so that no time is too large; adding zero turns −0 into 0.
  return fmt::format("seg_{:.0f}", std::trunc(start * 1000) + 0.0);
}

void fillIn(JsonFields& json, Segment& segment) {
  if (json.find("id") == nullptr) segment.id = defaultId(segment.start);
}

template <EditRecord Record>
void readRecord(JsonFields& json, Record& record) {
  std::apply([&](const auto&... field) { (readField(json, field, record), ...); },
             editFields<Record>);
  if constexpr (std::same_as<Record, Segment>) fillIn(json, record);
}

/// Turns records into JSON and remembers the first number that JSON cannot hold.
class Encoder {
 public:
  template <EditRecord Record>
  nlohmann::json json(const Record& record) {
    nlohmann::json object = nlohmann::json::object();
    const auto put = [&](const auto& field) { this->put(object, field.key, record.*field.member); };
    std::apply([&](const auto&... field) { (put(field), ...); }, editFields<Record>);
    return object;
  }

  /// The key of that number.
  const std::optional<std::string_view>& failure() const { return failure_; }

 private:
  template <typename Value>
  void put(nlohmann::json& object, std::string_view key, const Value& value) {
    object[key] = json(value);
    if constexpr (std::same_as<Value, double> || std::same_as<Value, std::vector<double>>) {
      if (!isFinite(value) && !failure_) failure_ = key;
    }
  }

  template <typename Value>
  void put(nlohmann::json& object, std::string_view key, const std::optional<Value>& value) {
    if (value) put(object, key, *value);
  }

  template <EditRecord Record>
  nlohmann::json json(const std::vector<Record>& records) {
    nlohmann::json array = nlohmann::json::array();
    for (const Record& record : records) array.push_back(json(record));
    return array;
  }

  template <typename Value>
  static nlohmann::json json(const Value& value) {
    return value;
  }

  static bool isFinite(double number) { return std::isfinite(number); }
  static bool isFinite(const std::vector<double>& numbers) {
    return std::ranges::all_of(numbers, [](double number) { return std::isfinite(number); });
  }

  std::optional<std::string_view> failure_;
};

}  // namespace

std::expected<EditDocument, PackageError> decodeEditDocument(std::string_view json) {
  const auto parsed = parseJson(json);
  if (!parsed) return malformedEdits("内容不是有效的 JSON");
  auto document = decodeRecord<EditDocument>(*parsed);
  if (!document) return malformedEdits(document.error());
  return *std::move(document);
}

std::expected<std::string, PackageError> encodeEditDocument(const EditDocument& document) {
  Encoder encoder;
  const nlohmann::json json = encoder.json(document);
  if (encoder.failure()) {
    return unencodable(fmt::format("字段“{}”不是有限的数字", *encoder.failure()));
  }
  try {
    constexpr int indent = 2;
    return json.dump(indent);
  } catch (const nlohmann::json::type_error&) {
    return unencodable("含有不是 UTF-8 的文字");
  }
}

}  // namespace vesk::package
