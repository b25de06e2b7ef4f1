#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <string>
#include <string_view>

#include "package/PackageError.h"

// Whole files as text, with errors in words the user understands. The calls block and may be made
// from any thread.
namespace vesk::package {

/// The bytes of a regular file. Anything else of that name (a pipe, a device, a directory) is
/// refused without waiting for it, and so is a file of more than `limit` bytes.
std::expected<std::string, PackageError> readWholeFile(const std::filesystem::path& file,
                                                       std::uintmax_t limit);

/// Replaces the contents in place; a failure may leave a part of the new text.
std::expected<void, PackageError> writeFile(const std::filesystem::path& file,
                                            std::string_view text);

}  // namespace vesk::package
