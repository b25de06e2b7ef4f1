#include "package/FileText.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "package/HugePages.h"

namespace vesk::package {

namespace {

// A reader that puts a sentinel behind the text needs no copy of it then.
constexpr std::size_t slack = 64;

/// An open file descriptor with one owner.
class Descriptor {
 public:
  explicit Descriptor(int number) : number_(number) {}
  Descriptor(const Descriptor&) = delete;
  Descriptor& operator=(const Descriptor&) = delete;
  ~Descriptor() {
    if (number_ >= 0) ::close(number_);
  }

  bool isOpen() const { return number_ >= 0; }
  int number() const { return number_; }

  /// Closes now, because a late write error may only show here.
  bool close() { return ::close(std::exchange(number_, -1)) == 0; }

 private:
  int number_;
};

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

/// The number of bytes read, fewer than `size` at the end of the file, or -1 with errno set.
ssize_t readFully(int descriptor, char* data, std::size_t size) {
  std::size_t done = 0;
  while (done < size) {
    const ssize_t count = ::read(descriptor, data + done, size - done);
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return -1;
    if (count == 0) break;
    done += static_cast<std::size_t>(count);
  }
  return static_cast<ssize_t>(done);
}

bool writeFully(int descriptor, std::string_view text) {
  while (!text.empty()) {
    const ssize_t count = ::write(descriptor, text.data(), text.size());
    if (count < 0 && errno == EINTR) continue;
    if (count < 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

/// Opens a new file in the target's directory under a hidden name that nobody else holds.
std::pair<Descriptor, std::filesystem::path> openBeside(const std::filesystem::path& file) {
  constexpr int attempts = 100;
  for (int attempt = 0;; ++attempt) {
    std::filesystem::path path =
        file.parent_path() /
        fmt::format(".{}.{}-{}", file.filename().native(), ::getpid(), attempt);
    const int number = ::open(path.c_str(), O_WRONLY | O_CREAT | O_EXCL | O_CLOEXEC, 0666);
    if (number >= 0 || errno != EEXIST || attempt == attempts) {
      return {std::piecewise_construct, std::forward_as_tuple(number),
              std::forward_as_tuple(std::move(path))};
    }
  }
}

/// Makes a rename in the directory last through a crash. File systems that cannot do this say so,
/// and there is nothing more to do then.
void syncDirectory(const std::filesystem::path& directory) {
  const Descriptor descriptor(
      ::open(directory.empty() ? "." : directory.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC));
  if (descriptor.isOpen()) ::fsync(descriptor.number());
}

}  // namespace

std::expected<std::string, PackageError> readWholeFile(const std::filesystem::path& file,
                                                       std::uintmax_t limit) {
  // Without O_NONBLOCK a pipe would keep the caller waiting for a writer.
  const Descriptor descriptor(::open(file.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK));
  struct stat status{};
  if (!descriptor.isOpen() || ::fstat(descriptor.number(), &status) != 0) {
    return std::unexpected(unreadable(file, causeInWords(errno)));
  }
  if (!S_ISREG(status.st_mode)) return std::unexpected(unreadable(file, causeInWords(EISDIR)));
  const auto size = static_cast<std::uintmax_t>(status.st_size);
  if (size > limit) {
    return std::unexpected(
        unreadable(file, fmt::format("文件有 {} 字节，超过上限 {} 字节", size, limit)));
  }

  std::string text;
  text.reserve(size + slack);
  preferHugePages(text.data(), text.capacity());
  bool failed = false;
  text.resize_and_overwrite(size, [&](char* data, std::size_t) -> std::size_t {
    const ssize_t count = readFully(descriptor.number(), data, size);
    failed = count < 0;
    return failed ? 0 : static_cast<std::size_t>(count);
  });
  if (failed) return std::unexpected(unreadable(file, causeInWords(errno)));
  return text;
}

std::expected<void, PackageError> writeFile(const std::filesystem::path& file,
                                            std::string_view text) {
  Descriptor descriptor(
      ::open(file.c_str(), O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NONBLOCK, 0666));
  if (!descriptor.isOpen() || !writeFully(descriptor.number(), text) || !descriptor.close()) {
    return std::unexpected(unwritable(file, causeInWords(errno)));
  }
  return {};
}

std::expected<void, PackageError> writeFileAtomically(const std::filesystem::path& file,
                                                      std::string_view text) {
  auto [descriptor, temporary] = openBeside(file);
  if (!descriptor.isOpen()) return std::unexpected(unwritable(file, causeInWords(errno)));
  if (!writeFully(descriptor.number(), text) || ::fsync(descriptor.number()) != 0 ||
      !descriptor.close() || ::rename(temporary.c_str(), file.c_str()) != 0) {
    const int code = errno;
    ::unlink(temporary.c_str());
    return std::unexpected(unwritable(file, causeInWords(code)));
  }
  syncDirectory(file.parent_path());
  return {};
}

}  // namespace vesk::package
