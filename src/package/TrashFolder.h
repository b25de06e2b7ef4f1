#pragma once

#include <cstdint>
#include <expected>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "package/Mount.h"
#include "package/PackageError.h"
#include "package/RecordingMeta.h"

namespace vesk::package {

/// The user's trash after the Trash specification 1.0 of freedesktop.org, from which file managers
/// restore. What lies on the file system of the home trash goes there; anything else goes into a
/// trash at the top of its own file system, the administrator's ".Trash" where that is safe, else
/// ".Trash-<user>". Where neither can be used the item stays: copying gigabytes into the home in
/// the background of a click would be worse. Written here rather than taken from GIO, which refuses
/// file systems that it deems the system's own, remembers the home folders for the life of the
/// process, and would be this program's only use of GLib.
class TrashFolder {
 public:
  struct Surroundings {
    std::filesystem::path dataHome;  ///< $XDG_DATA_HOME
    std::uint32_t userID = 0;
    std::function<std::optional<Mount>(const std::filesystem::path&)> mountOf;
  };

  /// Those of this process's user.
  static Surroundings currentSurroundings();

  explicit TrashFolder(Surroundings surroundings);

  /// Moves a file or directory into the trash and gives its place there. Its name in the trash is
  /// its own, with a number where that is taken. On failure the item is where it was and nothing
  /// of it is left in the trash.
  /// @param now the date of the deletion.
  std::expected<std::filesystem::path, PackageError> take(const std::filesystem::path& item,
                                                          Timestamp now) const;

 private:
  /// A trash that is ready to take something.
  struct Bin {
    std::filesystem::path directory;
    /// Paths are noted relative to it; empty in the home trash, which notes absolute ones.
    std::filesystem::path topDirectory;
  };

  static std::expected<std::optional<std::filesystem::path>, PackageError> takeUnder(
      const std::string& name, const std::filesystem::path& item, const Bin& bin,
      const std::string& info);
  std::optional<Bin> binFor(const std::filesystem::path& item) const;
  std::optional<Bin> homeBin() const;
  std::optional<Bin> topBin(const std::filesystem::path& topDirectory) const;
  std::filesystem::path topDirectoryOf(const std::filesystem::path& directory) const;
  bool isOnMountOf(const std::filesystem::path& path, const Mount& mount) const;

  Surroundings surroundings_;
};

}  // namespace vesk::package
