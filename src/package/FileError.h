#pragma once

#include <filesystem>
#include <string>
#include <string_view>

#include "package/PackageError.h"

// Failures of files as errors whose sentence names the file and the cause.
namespace vesk::package {

/// What an errno value means, in the user's language, as a clause without its full stop.
std::string causeInWords(int code);

PackageError unreadable(const std::filesystem::path& file, std::string_view cause);
PackageError unwritable(const std::filesystem::path& file, std::string_view cause);

}  // namespace vesk::package
