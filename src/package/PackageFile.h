#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <optional>
#include <string>
#include <string_view>

#include "package/PackageError.h"

// The files of a package, which may come from anywhere: what stands under a file's name is looked
// at before anything opens it. The calls may be made from any thread.
namespace vesk::package {

/// The path of a file of a package, or nothing when nothing of that name stands there. Refused is
/// what is no regular file (a pipe, a device, a directory) and a link that leads out of the package
/// or nowhere; the package directory itself may be reached through a link. Opens nothing, so it
/// never waits.
std::expected<std::optional<std::filesystem::path>, PackageError> packageFile(
    const std::filesystem::path& package, std::string_view name);

/// The bytes of a file of a package; an absent file is an error too.
/// @param limit the largest size in bytes that is read.
std::expected<std::string, PackageError> readPackageFile(const std::filesystem::path& package,
                                                         std::string_view name,
                                                         std::uintmax_t limit);

}  // namespace vesk::package
