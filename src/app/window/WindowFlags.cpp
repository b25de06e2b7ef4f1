#include "app/window/WindowFlags.h"

#include <string_view>
#include <system_error>

namespace vesk::app {
namespace {

RootMode initialMode(const CommandLine& commandLine) {
  if (commandLine.has("--edit")) return RootMode::edit;
  return commandLine.has("--library") ? RootMode::library : RootMode::record;
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
  return {.mode = initialMode(commandLine),
          .openCategory = category ? editor::EditorUIState::category(*category) : std::nullopt,
          .seek = commandLine.number("--seek"),
          .editPoke = commandLine.has("--edit-poke"),
          .package = package(commandLine)};
}

}  // namespace vesk::app
