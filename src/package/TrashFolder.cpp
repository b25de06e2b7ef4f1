#include "package/TrashFolder.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <string>
#include <string_view>
#include <system_error>
#include <utility>

#include "package/CutCharacter.h"
#include "package/DirectorySize.h"
#include "package/DurableWrite.h"
#include "package/FileError.h"
#include "package/FileText.h"
#include "package/TrashInfo.h"

namespace vesk::package {

namespace fs = std::filesystem;

namespace {

constexpr std::string_view infoExtension = ".trashinfo";

PackageError notTrashed(const fs::path& item, std::string_view cause) {
  return {PackageError::Kind::fileUnwritable,
          fmt::format("无法把“{}”移到废纸篓：{}。", item.native(), cause)};
}

/// The status of a path itself, not of what it links to.
std::optional<struct stat> statusOf(const fs::path& path) {
  struct stat status{};
  if (::lstat(path.c_str(), &status) != 0) return std::nullopt;
  return status;
}

/// Where an item lies, without links in front of its own name.
fs::path placeOf(const fs::path& item, std::error_code& error) {
  const auto plain = fs::absolute(item / "", error).lexically_normal().parent_path();
  if (error) return {};
  return fs::canonical(plain.parent_path(), error) / plain.filename();
}

/// Makes a directory that only its user may look into, and those above it that are missing.
bool makePrivateDirectory(const fs::path& path) {
  constexpr mode_t onlyOwner = 0700;
  if (::mkdir(path.c_str(), onlyOwner) == 0) return true;
  if (errno == ENOENT && path.has_relative_path()) {
    return makePrivateDirectory(path.parent_path()) && ::mkdir(path.c_str(), onlyOwner) == 0;
  }
  std::error_code ignored;
  return errno == EEXIST && fs::is_directory(path, ignored);
}

bool hasFolders(const fs::path& bin) {
  return makePrivateDirectory(bin / "files") && makePrivateDirectory(bin / "info");
}

/// Whether everybody may put a trash into ".Trash" and nobody may replace that of another user.
bool isSharedSafely(const fs::path& path) {
  const auto status = statusOf(path);
  return status && S_ISDIR(status->st_mode) && (status->st_mode & S_ISVTX) != 0;
}

/// In a directory that everybody may write to, another user could have laid a link or a trash of
/// their own under our name.
bool isOwnDirectory(const fs::path& path, std::uint32_t userID) {
  const auto status = statusOf(path);
  return status && S_ISDIR(status->st_mode) && status->st_uid == userID;
}

/// "take.recording", "take 2.recording", …, cut to leave room for the longer name of the info file.
std::string numberedName(const fs::path& name, int number) {
  constexpr std::size_t longestName = 255 - infoExtension.size();
  const std::string ending =
      (number == 1 ? "" : fmt::format(" {}", number)) + name.extension().native();
  const std::string stem = name.stem();
  const std::size_t room = longestName - std::min(longestName, ending.size());
  return std::string(withoutCutCharacter(std::string_view(stem).substr(0, room))) + ending;
}

/// Renames, or fails with EEXIST where something bears the new name.
bool renameIntoFree(const fs::path& from, const fs::path& to) {
  if (::renameat2(AT_FDCWD, from.c_str(), AT_FDCWD, to.c_str(), RENAME_NOREPLACE) == 0) return true;
  const bool isUnknownHere = errno == EINVAL || errno == ENOSYS;
  if (!isUnknownHere) return false;
  if (statusOf(to)) {
    errno = EEXIST;
    return false;
  }
  return ::rename(from.c_str(), to.c_str()) == 0;
}

/// Notes the size of a directory, which spares file managers a walk through it. It is a cache: a
/// failure costs nothing but time.
void noteSize(const fs::path& bin, const fs::path& directory, const fs::path& info) {
  constexpr std::uintmax_t largestCache = std::uintmax_t{1} << 20;
  const auto status = statusOf(info);
  const auto kind = statusOf(directory);
  if (!status || !kind || !S_ISDIR(kind->st_mode)) return;
  const fs::path file = bin / "directorysizes";
  const auto cache = readWholeFile(file, largestCache);
  if (!cache && statusOf(file)) return;
  [[maybe_unused]] const auto noted =
      writeFileAtomically(file, withDirectorySize(cache.value_or(""), directory.filename().native(),
                                                  allocatedSize(directory), status->st_mtime));
}

}  // namespace

TrashFolder::Surroundings TrashFolder::currentSurroundings() {
  const auto variable = [](const char* name) {
    const char* value = std::getenv(name);
    return fs::path(value == nullptr ? "" : value);
  };
  fs::path dataHome = variable("XDG_DATA_HOME");
  if (!dataHome.is_absolute()) dataHome = variable("HOME") / ".local" / "share";
  return {.dataHome = std::move(dataHome), .userID = ::getuid(), .mountOf = package::mountOf};
}

TrashFolder::TrashFolder(Surroundings surroundings) : surroundings_(std::move(surroundings)) {}

std::expected<fs::path, PackageError> TrashFolder::take(const fs::path& item, Timestamp now) const {
  std::error_code error;
  const fs::path place = placeOf(item, error);
  if (!error && !statusOf(place)) error = {errno, std::generic_category()};
  if (error) return std::unexpected(notTrashed(item, causeInWords(error.value())));
  const auto bin = binFor(place);
  if (!bin) return std::unexpected(notTrashed(item, "它所在的磁盘上没有可用的废纸篓"));

  const auto noted =
      bin->topDirectory.empty() ? place : place.lexically_relative(bin->topDirectory);
  const std::string info = trashInfo(noted, now);
  constexpr int mostNumbers = 100'000;
  for (int number = 1; number <= mostNumbers; ++number) {
    auto taken = takeUnder(numberedName(place.filename(), number), place, *bin, info);
    if (!taken) return std::unexpected(std::move(taken.error()));
    if (*taken) return **std::move(taken);
  }
  return std::unexpected(notTrashed(item, causeInWords(EEXIST)));
}

/// The info file comes first, because it is what reserves the name. Nothing when the name is taken.
std::expected<std::optional<fs::path>, PackageError> TrashFolder::takeUnder(
    const std::string& name, const fs::path& item, const Bin& bin, const std::string& info) {
  const fs::path infoFile = bin.directory / "info" / (name + std::string(infoExtension));
  constexpr mode_t onlyOwner = 0600;
  const auto reserved = writeNewFile(infoFile, info, onlyOwner);
  if (!reserved && reserved.error() == EEXIST) return std::nullopt;
  if (!reserved) return std::unexpected(notTrashed(item, causeInWords(reserved.error())));
  fs::path target = bin.directory / "files" / name;
  if (renameIntoFree(item, target)) {
    noteSize(bin.directory, target, infoFile);
    return target;
  }
  const int code = errno;
  ::unlink(infoFile.c_str());
  if (code == EEXIST) return std::nullopt;
  return std::unexpected(notTrashed(item, causeInWords(code)));
}

/// The trash for an item, made ready; nothing where there is none to be used.
std::optional<TrashFolder::Bin> TrashFolder::binFor(const fs::path& item) const {
  const fs::path directory = item.parent_path();
  const auto mount = surroundings_.mountOf(directory);
  if (!mount) return std::nullopt;
  const bool hasHome = surroundings_.dataHome.is_absolute();
  if (hasHome && isOnMountOf(surroundings_.dataHome / "Trash", *mount)) return homeBin();
  return topBin(topDirectoryOf(directory));
}

std::optional<TrashFolder::Bin> TrashFolder::homeBin() const {
  Bin bin{.directory = surroundings_.dataHome / "Trash", .topDirectory = {}};
  if (!hasFolders(bin.directory)) return std::nullopt;
  return bin;
}

std::optional<TrashFolder::Bin> TrashFolder::topBin(const fs::path& topDirectory) const {
  const auto readyAt = [&](const fs::path& directory) {
    return makePrivateDirectory(directory) && isOwnDirectory(directory, surroundings_.userID) &&
           hasFolders(directory);
  };
  const fs::path shared = topDirectory / ".Trash";
  Bin bin{.directory = shared / std::to_string(surroundings_.userID), .topDirectory = topDirectory};
  if (isSharedSafely(shared) && readyAt(bin.directory)) return bin;
  bin.directory = topDirectory / fmt::format(".Trash-{}", surroundings_.userID);
  if (readyAt(bin.directory)) return bin;
  return std::nullopt;
}

/// The uppermost directory of the mount that a directory lies on.
fs::path TrashFolder::topDirectoryOf(const fs::path& directory) const {
  const auto mount = surroundings_.mountOf(directory);
  fs::path top = directory;
  while (mount && top.has_relative_path() && isOnMountOf(top.parent_path(), *mount)) {
    top = top.parent_path();
  }
  return top;
}

/// A path that does not exist yet counts as lying where it would be made.
bool TrashFolder::isOnMountOf(const fs::path& path, const Mount& mount) const {
  for (fs::path existing = path;; existing = existing.parent_path()) {
    if (const auto found = surroundings_.mountOf(existing)) return *found == mount;
    if (!existing.has_relative_path()) return false;
  }
}

}  // namespace vesk::package
