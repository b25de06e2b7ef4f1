#include "media/LibavError.h"

#include <fmt/format.h>

#include <array>
#include <string>
#include <system_error>

extern "C" {
#include <libavutil/error.h>
}

namespace vesk::media {
namespace {

namespace fs = std::filesystem;

std::string quoted(const fs::path& path) {
  return fmt::format("“{}”", path.string());
}

std::string fileName(const fs::path& file) {
  return quoted(file.filename());
}

std::string libavText(int code) {
  std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
  av_strerror(code, text.data(), text.size());
  return text.data();
}

fs::path folderOf(const fs::path& file) {
  const fs::path folder = file.parent_path();
  return folder.empty() ? fs::path(".") : folder;
}

/// Causes that are the same in both directions; empty for the others.
std::string commonCause(int code) {
  switch (code) {
    case AVERROR(EIO):
      return "磁盘读写出错";
    case AVERROR(ENOMEM):
      return "内存不足";
    case AVERROR(EMFILE):
    case AVERROR(ENFILE):
      return "同时打开的文件太多";
    case AVERROR(ENAMETOOLONG):
      return "文件名太长";
    case AVERROR(ELOOP):
      return "符号链接互相指向";
    default:
      return {};
  }
}

std::string readingCause(int code, const fs::path& file) {
  const std::string name = fileName(file);
  switch (code) {
    case AVERROR(ENOENT):
    case AVERROR(ENOTDIR):
      return fmt::format("找不到文件 {}", name);
    case AVERROR(EACCES):
    case AVERROR(EPERM):
      return fmt::format("没有权限读取 {}", name);
    case AVERROR_INVALIDDATA:
    case AVERROR_EOF:
      return fmt::format("{} 不完整或已损坏", name);
    default:
      break;
  }
  const std::string common = commonCause(code);
  return fmt::format("{} 读不出来：{}", name, common.empty() ? libavText(code) : common);
}

std::string closedFolderCause(int code, const fs::path& file) {
  const fs::path folder = folderOf(file);
  std::error_code ignored;
  if (!fs::exists(folder, ignored)) {
    return fmt::format("输出文件夹 {} 不存在", quoted(folder));
  }
  if (!fs::is_directory(folder, ignored)) {
    return fmt::format("{} 不是文件夹", quoted(folder));
  }
  if (code == AVERROR(EROFS)) {
    return fmt::format("输出文件夹 {} 所在的磁盘是只读的", quoted(folder));
  }
  return fmt::format("没有权限写入输出文件夹 {}", quoted(folder));
}

std::string writingCause(int code, const fs::path& file) {
  const std::string name = fileName(file);
  switch (code) {
    case AVERROR(ENOENT):
    case AVERROR(ENOTDIR):
    case AVERROR(EACCES):
    case AVERROR(EPERM):
    case AVERROR(EROFS):
      return closedFolderCause(code, file);
    case AVERROR(EISDIR):
      return fmt::format("{} 是一个文件夹", name);
    case AVERROR(ENOSPC):
      return fmt::format("磁盘空间不足，{} 没有写完", name);
    case AVERROR(EDQUOT):
      return fmt::format("磁盘配额已用完，{} 没有写完", name);
    case AVERROR(EFBIG):
      return fmt::format("{} 超过了允许的文件大小，没有写完", name);
    default:
      break;
  }
  const std::string common = commonCause(code);
  return fmt::format("{} 写不进去：{}", name, common.empty() ? libavText(code) : common);
}

bool isOutOfSpace(int code) {
  return code == AVERROR(ENOSPC) || code == AVERROR(EDQUOT) || code == AVERROR(EFBIG);
}

}  // namespace

MediaError readingError(MediaError::Kind kind, int code, const fs::path& file) {
  return {kind, readingCause(code, file)};
}

MediaError writingError(MediaError::Kind kind, int code, const fs::path& file) {
  return {isOutOfSpace(code) ? MediaError::Kind::diskFull : kind, writingCause(code, file)};
}

MediaError noVideoTrackError(const fs::path& file) {
  return {MediaError::Kind::noVideoTrack, fmt::format("{} 里没有视频轨", fileName(file))};
}

}  // namespace vesk::media
