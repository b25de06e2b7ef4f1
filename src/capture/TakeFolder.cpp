#include "capture/TakeFolder.h"

#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <chrono>

#include "package/FileError.h"

namespace vesk::capture {
namespace {

constexpr mode_t forTheUserAlone = 0700;
constexpr int secondsToTry = 60;

}  // namespace

std::expected<std::filesystem::path, std::string> makeTakeFolder(
    const package::RecordingLibrary& library, package::Timestamp date) {
  if (!library.ensureRoot()) {
    return std::unexpected(
        fmt::format("无法写入录制目录：{}。检查路径是否存在或有写权限。", library.root().string()));
  }
  int code = EEXIST;
  std::filesystem::path folder;
  for (int i = 0; i < secondsToTry && code == EEXIST; ++i) {
    folder = library.newPackageURL(date + std::chrono::seconds{i});
    code = mkdir(folder.c_str(), forTheUserAlone) == 0 ? 0 : errno;
  }
  if (code != 0) {
    return std::unexpected(package::unwritable(folder, package::causeInWords(code)).message);
  }
  return folder;
}

}  // namespace vesk::capture
