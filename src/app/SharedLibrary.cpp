#include "app/SharedLibrary.h"

#include <chrono>
#include <filesystem>
#include <optional>
#include <utility>

#include "media/Thumbnail.h"
#include "package/TrashFolder.h"
#include "package/UserDefaults.h"

namespace vesk::app {
namespace {

using package::RecordingLibrary;

RecordingLibrary::FolderPanel& folderPanel() {
  static RecordingLibrary::FolderPanel panel;
  return panel;
}

std::optional<std::filesystem::path> askForFolder(const RecordingLibrary::FolderRequest& request) {
  return folderPanel() ? folderPanel()(request) : std::nullopt;
}

package::Timestamp now() {
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

}  // namespace

RecordingLibrary& sharedLibrary() {
  static package::UserDefaults defaults(package::UserDefaults::defaultFile());
  static RecordingLibrary library(
      {.defaults = defaults,
       .trashFolder = package::TrashFolder(package::TrashFolder::currentSurroundings()),
       .makeThumbnail = media::thumbnail,
       .askForFolder = askForFolder,
       .now = now});
  return library;
}

void setFolderPanel(RecordingLibrary::FolderPanel panel) {
  folderPanel() = std::move(panel);
}

}  // namespace vesk::app
