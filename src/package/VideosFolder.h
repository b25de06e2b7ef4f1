#pragma once

#include <filesystem>
#include <string_view>

namespace vesk::package {

/// The videos folder of a user: the one that the last XDG_VIDEOS_DIR line of "user-dirs.dirs"
/// names, as xdg-user-dirs defines that file ("$HOME/…" or an absolute path, in double quotes,
/// with backslash escapes), else "Videos" in the home directory.
std::filesystem::path videosFolder(const std::filesystem::path& home, std::string_view userDirs);

}  // namespace vesk::package
