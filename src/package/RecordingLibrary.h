#pragma once

#include <cstdint>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "package/ChangeSignal.h"
#include "package/Picture.h"
#include "package/RecordingItem.h"
#include "package/TrashFolder.h"
#include "package/UserDefaults.h"

namespace vesk::package {

/// The folder of packages: where it lies, and what lay in it at the last scan. Nothing watches the
/// folder, and no index of it is kept. One thread, the user interface's; only a thumbnail may be
/// made beside it, on any thread.
class RecordingLibrary {
 public:
  using Item = RecordingItem;

  /// The picture of a package, or nothing when it has none. Called on any thread.
  using ThumbnailMaker =
      std::function<std::optional<Picture>(const std::filesystem::path& package)>;

  /// What a panel for the choice of a folder is to show.
  struct FolderRequest {
    std::filesystem::path start;
    std::string prompt;
    std::string message;
    bool operator==(const FolderRequest&) const = default;
  };
  /// The chosen folder, or nothing when the user has changed their mind.
  using FolderPanel = std::function<std::optional<std::filesystem::path>(const FolderRequest&)>;

  struct Surroundings {
    UserDefaults& defaults;  ///< outlives the library
    TrashFolder trashFolder;
    ThumbnailMaker makeThumbnail;
    FolderPanel askForFolder;
    std::function<Timestamp()> now;
  };

  /// Reads the root from the defaults. Does not scan.
  explicit RecordingLibrary(Surroundings surroundings);

  const std::filesystem::path& root() const { return root_; }
  /// The newest first.
  const std::vector<Item>& items() const { return items_; }
  /// The sum of the items' bytes.
  std::int64_t totalBytes() const { return totalBytes_; }

  /// Observes root, items and total: called after each change of one of them, and not when a new
  /// value equals the old one.
  ChangeSignal::Subscription onChange(ChangeSignal::Observer observer);

  /// Makes a folder the root, stores its path and scans it. A path that cannot be stored is logged
  /// and holds until the end of the process.
  void setRoot(const std::filesystem::path& url);
  /// Makes the default root the root; its path is then stored like any other.
  void resetRoot();
  bool isDefaultRoot() const;
  /// Asks the user for a root, and waits for the answer. True when a folder was chosen.
  bool chooseRoot();
  /// Creates the root where it is missing. A failure is logged and gives false.
  bool ensureRoot() const;

  /// Where a package of this date belongs. Two of one second would share the name.
  std::filesystem::path newPackageURL(Timestamp date) const;

  /// Takes the items from the folder as it is now. A folder that cannot be listed counts as empty;
  /// a package without a readable index is left out.
  void rescan();

  /// Moves a package to the trash and scans anew. A failure is logged and gives false; the package
  /// is then where it was.
  bool trash(const std::filesystem::path& url);

  /// The thumbnail of a package, made and kept in it at the first call.
  std::optional<Picture> thumbnail(const std::filesystem::path& url) const;

 private:
  Surroundings surroundings_;
  std::filesystem::path root_;
  std::vector<Item> items_;
  std::int64_t totalBytes_ = 0;
  ChangeSignal changed_;
};

}  // namespace vesk::package
