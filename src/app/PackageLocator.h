#pragma once

#include <filesystem>
#include <functional>
#include <optional>

#include "app/CommandLine.h"

namespace vesk::app {

/// The package that a command is to work on: the value of `--package`, not tested for anything, or
/// the newest one of the library; nothing when the library has none.
std::optional<std::filesystem::path> findPackage(
    const CommandLine& commandLine, const std::function<std::filesystem::path()>& libraryRoot);

}  // namespace vesk::app
