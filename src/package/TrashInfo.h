#pragma once

#include <cstdint>
#include <filesystem>
#include <string>
#include <string_view>

#include "package/RecordingMeta.h"

// The texts of a trash folder, after the Trash specification 1.0 of freedesktop.org.
namespace vesk::package {

/// A path as it stands in these texts: each byte that is no unreserved character of RFC 2396, nor a
/// slash, as a percent sign and two hexadecimal digits.
std::string percentEncoded(std::string_view path);

/// A ".trashinfo" file: where something was, and when it was deleted, in local time.
std::string trashInfo(const std::filesystem::path& original, Timestamp deletionDate);

/// The "directorysizes" cache with the entry of one directory added or replaced.
/// @param infoTime when the directory's ".trashinfo" file was changed, in seconds since 1970.
std::string withDirectorySize(std::string_view cache, std::string_view name, std::int64_t bytes,
                              std::int64_t infoTime);

}  // namespace vesk::package
