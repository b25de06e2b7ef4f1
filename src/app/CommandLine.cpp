#include "app/CommandLine.h"

#include <algorithm>
#include <charconv>
#include <cmath>
#include <system_error>

namespace vesk::app {

CommandLine::CommandLine(std::span<const char* const> arguments)
    : arguments_(arguments.begin(), arguments.end()) {}

bool CommandLine::has(std::string_view flag) const {
  return std::ranges::find(arguments_, flag) != arguments_.end();
}

std::optional<std::string_view> CommandLine::value(std::string_view flag) const {
  return behind(flag, 1);
}

std::optional<std::string_view> CommandLine::secondValue(std::string_view flag) const {
  return behind(flag, 2);
}

std::optional<std::string_view> CommandLine::behind(std::string_view flag,
                                                    std::ptrdiff_t steps) const {
  const auto found = std::ranges::find(arguments_, flag);
  if (arguments_.end() - found <= steps) return std::nullopt;
  return found[steps];
}

std::optional<double> CommandLine::number(std::string_view flag) const {
  const std::optional<std::string_view> text = value(flag);
  return text ? parseNumber(*text) : std::nullopt;
}

std::optional<double> parseNumber(std::string_view text) {
  if (text.starts_with('+') && !text.starts_with("+-")) {
    text.remove_prefix(1);
  }
  double number = 0;
  const char* const end = text.data() + text.size();
  const auto [stop, error] = std::from_chars(text.data(), end, number);
  if (error != std::errc{} || stop != end || !std::isfinite(number)) {
    return std::nullopt;
  }
  return number;
}

}  // namespace vesk::app
