#pragma once

#include <filesystem>
#include <string_view>

#include "package/RecordingMeta.h"
#include "package/UserDefaults.h"

// The library is a folder of packages; these functions say where it lies and how packages are
// named in it.
namespace vesk::package {

/// The user default that holds the path of the root.
inline constexpr std::string_view libraryPathKey = "recordingLibraryPath";

/// The root of a user who has chosen nothing: "Vesk" in the user's videos folder.
std::filesystem::path defaultRoot();

/// The root stored under libraryPathKey, or defaultRoot() when that is absent or empty.
std::filesystem::path currentRootFromDefaults(const UserDefaults& defaults);

/// root / "yyyyMMdd-HHmmss.recording" in local time.
std::filesystem::path newPackageURL(const std::filesystem::path& root, Timestamp date);

}  // namespace vesk::package
