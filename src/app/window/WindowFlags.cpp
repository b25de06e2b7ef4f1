#include "app/window/WindowFlags.h"

#include <fmt/format.h>

#include <array>
#include <string_view>
#include <system_error>
#include <utility>

namespace vesk::app {
namespace {

struct ModeFlag {
  std::string_view flag;
  RootMode mode;
};

/// The first that is given wins.
constexpr std::array modeFlags{ModeFlag{.flag = "--edit", .mode = RootMode::edit},
                               ModeFlag{.flag = "--library", .mode = RootMode::library}};

std::optional<RootMode> mode(const CommandLine& commandLine) {
  for (const ModeFlag& each : modeFlags) {
    if (commandLine.has(each.flag)) return each.mode;
  }
  return std::nullopt;
}

std::optional<std::filesystem::path> package(const CommandLine& commandLine) {
  const std::optional<std::string_view> value = commandLine.value("--package");
  if (!value || value->empty()) return std::nullopt;
  const std::filesystem::path given{*value};
  std::error_code error;
  // The instance that opens it may run elsewhere.
  std::filesystem::path absolute = std::filesystem::absolute(given, error);
  return error ? given : absolute;
}

}  // namespace

WindowFlags windowFlags(const CommandLine& commandLine) {
  const std::optional<std::string_view> category = commandLine.value("--open");
  return {.mode = mode(commandLine),
          .openCategory = category ? editor::EditorUIState::category(*category) : std::nullopt,
          .seek = commandLine.number("--seek"),
          .editPoke = commandLine.has("--edit-poke"),
          .package = package(commandLine)};
}

std::vector<std::string> arguments(const WindowFlags& flags) {
  std::vector<std::string> arguments;
  for (const ModeFlag& each : modeFlags) {
    if (flags.mode == each.mode) arguments.emplace_back(each.flag);
  }
  const auto add = [&](std::string_view flag, std::string value) {
    arguments.emplace_back(flag);
    arguments.push_back(std::move(value));
  };
  if (flags.openCategory) {
    add("--open", std::string(editor::EditorUIState::rawValue(*flags.openCategory)));
  }
  if (flags.seek) add("--seek", fmt::format("{}", *flags.seek));
  if (flags.editPoke) arguments.emplace_back("--edit-poke");
  if (flags.package) add("--package", flags.package->string());
  return arguments;
}

}  // namespace vesk::app
