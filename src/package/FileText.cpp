#include "package/FileText.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <filesystem>
#include <system_error>
#include <utility>

#include "package/FileError.h"
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

}  // namespace vesk::package
