#include "capture/x11/WindowOwner.h"

#include <fmt/format.h>
#include <simdjson.h>

#include <algorithm>
#include <fstream>

#include "capture/x11/WindowTree.h"

namespace vesk::capture::x11 {
namespace {

std::optional<std::string> text(const Connection& connection, std::uint32_t window,
                                std::string_view property) {
  const auto bytes = connection.property(window, connection.atom(property));
  if (!bytes || bytes->empty()) return std::nullopt;
  return utf8Text(*bytes);
}

/// The class of a window, which all of an application's have in common. It stands behind the name
/// of its kind, each with a zero at its end.
std::optional<std::string> windowClass(const Connection& connection, std::uint32_t window) {
  const auto both = text(connection, window, "WM_CLASS");
  if (!both) return std::nullopt;
  const auto end = std::min(both->find('\0'), both->size());
  const std::string_view kind = std::string_view{*both}.substr(0, end);
  std::string_view name = std::string_view{*both}.substr(std::min(end + 1, both->size()));
  name = name.substr(0, name.find('\0'));
  if (name.empty()) name = kind;
  if (name.empty()) return std::nullopt;
  return std::string{name};
}

std::optional<std::string> programOf(std::int32_t process) {
  std::ifstream file{fmt::format("/proc/{}/comm", process)};
  std::string name;
  if (!std::getline(file, name) || name.empty()) return std::nullopt;
  return utf8Text(name);
}

}  // namespace

std::optional<std::string> windowTitle(const Connection& connection, std::uint32_t window) {
  if (auto title = text(connection, window, "_NET_WM_NAME")) return title;
  return text(connection, window, "WM_NAME");
}

std::optional<ScreenWindow::Owner> windowOwner(const Connection& connection, std::uint32_t window) {
  const auto process = processOf(connection, window);
  auto name = windowClass(connection, window);
  if (!name && process) name = programOf(*process);
  if (!name) return std::nullopt;
  return ScreenWindow::Owner{
      .applicationID = *name, .applicationName = *name, .processID = process.value_or(0)};
}

std::string utf8Text(std::string_view bytes) {
  if (simdjson::validate_utf8(bytes)) return std::string{bytes};
  std::string text;
  for (const char byte : bytes) {
    const auto code = static_cast<unsigned char>(byte);
    if (code < 0x80) {
      text += byte;
    } else {
      text += static_cast<char>(0xC0 | code >> 6);
      text += static_cast<char>(0x80 | (code & 0x3F));
    }
  }
  return text;
}

}  // namespace vesk::capture::x11
