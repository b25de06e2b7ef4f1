#pragma once

#include <sys/types.h>

#include <expected>
#include <filesystem>
#include <string_view>

#include "package/FileSystemCalls.h"
#include "package/PackageError.h"

// Files that last through a crash once the call has returned. The calls block and may be made from
// any thread and any process at the same time; the directory must exist.
namespace vesk::package {

/// Writes beside the file and renames over it, so that a reader, also one after a crash, finds the
/// old text or the new and never a mixture. A regular file keeps its permissions; a link is
/// replaced and not followed. After a failure the old text stands, unless the very last step, to
/// make the new name last, was what failed.
///
/// The text is written under a hidden name, ".<name>.saving-<number>", and locked meanwhile: one
/// that is not locked was left by a process that was ended, and the next write removes it.
std::expected<void, PackageError> writeFileAtomically(const std::filesystem::path& file,
                                                      std::string_view text,
                                                      FileSystemCalls& calls = systemCalls());

/// Writes a file that does not exist yet; a failure is an errno value, EEXIST when it does, and
/// leaves no file.
/// @param mode the permissions, as far as the process's mask lets them through.
std::expected<void, int> writeNewFile(const std::filesystem::path& file, std::string_view text,
                                      mode_t mode, FileSystemCalls& calls = systemCalls());

}  // namespace vesk::package
