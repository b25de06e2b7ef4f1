#include "package/LibraryRoot.h"

#include <pwd.h>
#include <unistd.h>

#include <cstdlib>
#include <string>
#include <system_error>
#include <vector>

#include "package/CalendarTime.h"
#include "package/FileText.h"
#include "package/VideosFolder.h"

namespace vesk::package {

namespace {

bool isDirectory(const std::filesystem::path& path) {
  std::error_code ignored;
  return std::filesystem::is_directory(path, ignored);
}

/// The home directory that the account database gives this process's user.
std::filesystem::path homeOfAccount() {
  constexpr std::size_t bufferSize = std::size_t{1} << 16;
  std::vector<char> buffer(bufferSize);
  passwd entry{};
  passwd* found = nullptr;
  if (::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found) != 0) return {};
  if (found == nullptr || found->pw_dir == nullptr) return {};
  return found->pw_dir;
}

/// An existing home directory, or an empty path. The account's own comes first, because a sandbox
/// may point HOME into itself.
std::filesystem::path homeDirectory() {
  if (auto home = homeOfAccount(); home.is_absolute() && isDirectory(home)) return home;
  const char* variable = std::getenv("HOME");
  std::filesystem::path home = variable == nullptr ? "" : variable;
  if (home.is_absolute() && isDirectory(home)) return home;
  return {};
}

std::filesystem::path temporaryDirectory() {
  std::error_code error;
  auto directory = std::filesystem::temp_directory_path(error);
  return error ? std::filesystem::path("/tmp") : directory;
}

/// The contents of "user-dirs.dirs", empty when there is none.
std::string userDirsOf(const std::filesystem::path& home) {
  constexpr std::uintmax_t largestUserDirs = std::uintmax_t{1} << 20;
  return readWholeFile(home / ".config" / "user-dirs.dirs", largestUserDirs).value_or("");
}

}  // namespace

std::filesystem::path defaultRoot() {
  const auto home = homeDirectory();
  const auto parent = home.empty() ? temporaryDirectory() : videosFolder(home, userDirsOf(home));
  return parent / "Vesk";
}

std::filesystem::path currentRootFromDefaults(const UserDefaults& defaults) {
  const auto stored = defaults.string(libraryPathKey);
  if (!stored || stored->empty()) return defaultRoot();
  return *stored;
}

std::filesystem::path newPackageURL(const std::filesystem::path& root, Timestamp date) {
  return root / (localStamp(date) + ".recording");
}

}  // namespace vesk::package
