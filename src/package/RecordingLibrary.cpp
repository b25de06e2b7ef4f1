#include "package/RecordingLibrary.h"

#include <algorithm>
#include <string_view>
#include <system_error>
#include <utility>

#include "package/DirectorySize.h"
#include "package/LibraryRoot.h"
#include "package/Log.h"
#include "package/RecordingProject.h"

namespace vesk::package {

namespace {

/// Absolute, without dots and without a slash at its end.
std::filesystem::path standardized(const std::filesystem::path& path) {
  std::error_code error;
  const auto absolute = std::filesystem::absolute(path, error);
  auto plain = (error ? path : absolute).lexically_normal();
  return plain.has_filename() || !plain.has_relative_path() ? plain : plain.parent_path();
}

std::vector<RecordingItem> itemsIn(const std::filesystem::path& root, Timestamp now) {
  std::vector<RecordingItem> items;
  for (const auto& package : listPackages(root)) {
    if (auto item = scanRecording(package, now)) items.push_back(*std::move(item));
  }
  std::ranges::stable_sort(items, std::ranges::greater{}, &RecordingItem::createdAt);
  return items;
}

std::int64_t totalOf(const std::vector<RecordingItem>& items) {
  std::int64_t total = 0;
  for (const auto& item : items) total = sumOfSizes(total, item.bytes);
  return total;
}

}  // namespace

RecordingLibrary::RecordingLibrary(Surroundings surroundings)
    : surroundings_(std::move(surroundings)),
      root_(currentRootFromDefaults(surroundings_.defaults)) {}

ChangeSignal::Subscription RecordingLibrary::onChange(ChangeSignal::Observer observer) {
  return changed_.subscribe(std::move(observer));
}

void RecordingLibrary::setRoot(const std::filesystem::path& url) {
  auto root = standardized(url);
  const bool isNew = std::exchange(root_, root) != root;
  const auto stored = surroundings_.defaults.set(libraryPathKey, std::string_view(root.native()));
  if (!stored) log(LogCategory::library).error("store root failed: {}", stored.error().message);
  log(LogCategory::library).info("library root -> {}", root.native());
  if (isNew) changed_.notify();
  rescan();
}

void RecordingLibrary::resetRoot() {
  setRoot(defaultRoot());
}

bool RecordingLibrary::isDefaultRoot() const {
  return standardized(root_) == standardized(defaultRoot());
}

bool RecordingLibrary::chooseRoot() {
  const auto folder = surroundings_.askForFolder(
      {.start = root_, .prompt = "选择", .message = "选择录制文件的保存位置"});
  if (!folder) return false;
  setRoot(*folder);
  return true;
}

bool RecordingLibrary::ensureRoot() const {
  std::error_code error;
  std::filesystem::create_directories(root_, error);
  if (!error) return true;
  log(LogCategory::library).error("create root failed: {}", error.message());
  return false;
}

std::filesystem::path RecordingLibrary::newPackageURL(Timestamp date) const {
  return package::newPackageURL(root_, date);
}

void RecordingLibrary::rescan() {
  auto items = itemsIn(root_, surroundings_.now());
  if (items == items_) return;
  totalBytes_ = totalOf(items);
  items_ = std::move(items);
  changed_.notify();
}

bool RecordingLibrary::trash(const std::filesystem::path& url) {
  const auto moved = surroundings_.trashFolder.take(url, surroundings_.now());
  if (!moved) {
    log(LogCategory::library).error("trash failed: {}", moved.error().message);
    return false;
  }
  rescan();
  return true;
}

std::optional<Picture> RecordingLibrary::thumbnail(const std::filesystem::path& url) const {
  return surroundings_.makeThumbnail(url);
}

}  // namespace vesk::package
