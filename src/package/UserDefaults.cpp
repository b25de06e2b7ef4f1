#include "package/UserDefaults.h"

#include <fmt/format.h>
#include <pwd.h>
#include <unistd.h>

#include <cmath>
#include <cstdint>
#include <cstdlib>
#include <nlohmann/json.hpp>
#include <system_error>
#include <utility>

#include "package/DurableWrite.h"
#include "package/FileText.h"
#include "package/Log.h"

namespace vesk::package {
namespace {

using Json = nlohmann::json;

constexpr std::uintmax_t largestFile = 1U << 20U;
/// Settings are flat; deeper values come from no version of this program and cost stack to print.
constexpr int deepestSetting = 16;

/// An environment variable that holds an absolute path; any other value is to be ignored.
std::filesystem::path absolutePathFromEnvironment(const char* name) {
  const char* value = std::getenv(name);
  if (value == nullptr) return {};
  std::filesystem::path path{value};
  return path.is_absolute() ? path : std::filesystem::path{};
}

std::filesystem::path settingsHome() {
  if (auto home = absolutePathFromEnvironment("HOME"); !home.empty()) return home;
  const passwd* user = ::getpwuid(::getuid());
  return user != nullptr && user->pw_dir != nullptr ? user->pw_dir : "/";
}

/// The text as a JSON object, or nothing when it is none or is nested too deep.
std::optional<Json> parsedObject(std::string_view text) {
  bool tooDeep = false;
  const auto noteDepth = [&](int depth, Json::parse_event_t, const Json&) {
    tooDeep = tooDeep || depth > deepestSetting;
    return depth <= deepestSetting;
  };
  auto object = Json::parse(text, noteDepth, /*allow_exceptions=*/false);
  if (!object.is_object() || tooDeep) return std::nullopt;
  return object;
}

PackageError unwritable(std::string_view what, const std::filesystem::path& file,
                        const std::error_code& error) {
  return {.kind = PackageError::Kind::fileUnwritable,
          .message = fmt::format("{}“{}”：{}", what, file.string(), error.message())};
}

/// Renames the file to a name beside it that is still free.
std::expected<std::filesystem::path, PackageError> setAside(const std::filesystem::path& file) {
  std::error_code error;
  for (int number = 1; !error; ++number) {
    std::filesystem::path aside = file;
    aside += fmt::format(".corrupt-{}", number);
    if (std::filesystem::exists(aside, error) || error) continue;
    std::filesystem::rename(file, aside, error);
    if (!error) return aside;
  }
  return std::unexpected(unwritable("无法移开损坏的设置文件", file, error));
}

}  // namespace

UserDefaults::UserDefaults(std::filesystem::path file) : file_{std::move(file)} {
  if (auto values = read()) {
    values_ = *std::move(values);
  } else {
    log(LogCategory::app).error("user defaults not read: {}", values.error().message);
  }
}

std::filesystem::path UserDefaults::defaultFile() {
  auto directory = absolutePathFromEnvironment("XDG_CONFIG_HOME");
  if (directory.empty()) directory = settingsHome() / ".config";
  return directory / "vesk" / "defaults.json";
}

std::optional<std::string> UserDefaults::string(std::string_view key) const {
  return value<std::string>(key);
}

std::optional<bool> UserDefaults::boolean(std::string_view key) const {
  return value<bool>(key);
}

std::optional<double> UserDefaults::number(std::string_view key) const {
  return value<double>(key);
}

std::expected<void, PackageError> UserDefaults::set(std::string_view key, std::string_view value) {
  return setValue(key, std::string{value});
}

std::expected<void, PackageError> UserDefaults::set(std::string_view key, const char* value) {
  return setValue(key, std::string{value});
}

std::expected<void, PackageError> UserDefaults::set(std::string_view key, bool value) {
  return setValue(key, value);
}

std::expected<void, PackageError> UserDefaults::set(std::string_view key, double value) {
  if (!std::isfinite(value)) {
    return std::unexpected(PackageError{.kind = PackageError::Kind::outOfRange,
                                        .message = fmt::format("设置“{}”不是有限的数", key)});
  }
  return setValue(key, value);
}

std::expected<void, PackageError> UserDefaults::remove(std::string_view key) {
  auto values = read();
  if (!values) return std::unexpected(values.error());
  if (const auto found = values->find(key); found != values->end()) values->erase(found);
  return write(*std::move(values));
}

std::optional<UserDefaults::Values> UserDefaults::parsed(std::string_view text) {
  const auto object = parsedObject(text);
  if (!object) return std::nullopt;
  Values values;
  for (const auto& [key, json] : object->items()) {
    if (json.is_boolean()) {
      values.emplace(key, json.get<bool>());
    } else if (json.is_number()) {
      values.emplace(key, json.get<double>());
    } else if (json.is_string()) {
      values.emplace(key, json.get<std::string>());
    } else {
      values.emplace(key, OtherJSON{json.dump()});
    }
  }
  return values;
}

std::optional<std::string> UserDefaults::printed(const Values& values) {
  auto object = Json::object();
  for (const auto& [key, value] : values) {
    if (const auto* other = std::get_if<OtherJSON>(&value)) {
      object[key] = Json::parse(other->text);
    } else if (const auto* text = std::get_if<std::string>(&value)) {
      object[key] = *text;
    } else if (const auto* number = std::get_if<double>(&value)) {
      object[key] = *number;
    } else {
      object[key] = std::get<bool>(value);
    }
  }
  try {
    return object.dump(2) + '\n';
  } catch (const Json::type_error&) {  // a string that is not UTF-8
    return std::nullopt;
  }
}

template <typename T>
std::optional<T> UserDefaults::value(std::string_view key) const {
  const auto found = values_.find(key);
  if (found == values_.end()) return std::nullopt;
  const auto* value = std::get_if<T>(&found->second);
  return value == nullptr ? std::nullopt : std::optional<T>{*value};
}

/// What the file holds now. After a damaged file the values known so far stand.
std::expected<UserDefaults::Values, PackageError> UserDefaults::read() const {
  std::error_code error;
  if (!std::filesystem::exists(file_, error) && !error) return Values{};
  const auto text = readWholeFile(file_, largestFile);
  if (!text) return std::unexpected(text.error());
  if (auto values = parsed(*text)) return *std::move(values);
  const auto aside = setAside(file_);
  if (!aside) return std::unexpected(aside.error());
  log(LogCategory::app).error("user defaults were damaged, set aside as {}", aside->string());
  return values_;
}

std::expected<void, PackageError> UserDefaults::setValue(std::string_view key, Value value) {
  auto values = read();
  if (!values) return std::unexpected(values.error());
  values->insert_or_assign(std::string{key}, std::move(value));
  return write(*std::move(values));
}

std::expected<void, PackageError> UserDefaults::write(Values values) {
  const auto text = printed(values);
  if (!text) {
    return std::unexpected(PackageError{.kind = PackageError::Kind::notUtf8,
                                        .message = "设置中的文本不是有效的 UTF-8"});
  }
  std::error_code error;
  std::filesystem::create_directories(file_.parent_path(), error);
  if (error) return std::unexpected(unwritable("无法创建设置目录", file_.parent_path(), error));
  if (auto written = writeFileAtomically(file_, *text); !written) return written;
  values_ = std::move(values);
  return {};
}

}  // namespace vesk::package
