#include "package/FileError.h"

#include <fmt/format.h>

#include <cerrno>
#include <system_error>

namespace vesk::package {

std::string causeInWords(int code) {
  switch (code) {
    case ENOENT:
      return "文件或文件夹不存在";
    case EACCES:
    case EPERM:
      return "没有权限";
    case ENOSPC:
    case EDQUOT:
      return "磁盘空间不足";
    case EROFS:
      return "所在磁盘是只读的";
    case EISDIR:
    case ENXIO:
      return "它不是普通文件";
    case ENOTDIR:
      return "路径中有一段不是文件夹";
    case ENAMETOOLONG:
      return "名称太长";
    case ELOOP:
      return "链接互相指向，没有终点";
    case EIO:
      return "磁盘读写出错";
    default:
      return std::generic_category().message(code);
  }
}

PackageError unreadable(const std::filesystem::path& file, std::string_view cause) {
  return {PackageError::Kind::fileUnreadable,
          fmt::format("无法读取“{}”：{}。", file.native(), cause)};
}

PackageError unwritable(const std::filesystem::path& file, std::string_view cause) {
  return {PackageError::Kind::fileUnwritable,
          fmt::format("无法写入“{}”：{}。", file.native(), cause)};
}

}  // namespace vesk::package
