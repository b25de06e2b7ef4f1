#include "package/DurableWrite.h"

#include <fcntl.h>
#include <fmt/format.h>
#include <sys/stat.h>

#include <cerrno>
#include <optional>
#include <utility>

#include "package/FileError.h"

namespace vesk::package {

namespace fs = std::filesystem;

namespace {

constexpr mode_t permissionBits = 0777;
constexpr mode_t newFileMode = 0666;

/// Repeats a call that a signal cut short.
template <typename Call>
auto completed(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

/// An open file descriptor with one owner; `errno` tells why there is none.
class OpenFile {
 public:
  OpenFile(FileSystemCalls& calls, const fs::path& path, int flags, mode_t mode = 0)
      : calls_(&calls),
        number_(completed([&] { return calls.open(path.c_str(), flags | O_CLOEXEC, mode); })) {}
  OpenFile(OpenFile&& other) noexcept
      : calls_(other.calls_), number_(std::exchange(other.number_, -1)) {}
  OpenFile(const OpenFile&) = delete;
  OpenFile& operator=(OpenFile&&) = delete;
  OpenFile& operator=(const OpenFile&) = delete;
  ~OpenFile() {
    const int code = errno;
    if (number_ >= 0) calls_->close(number_);
    errno = code;
  }

  bool isOpen() const { return number_ >= 0; }
  int number() const { return number_; }

  bool lock() const {
    return completed([&] { return calls_->lock(number_); }) == 0;
  }
  bool changeMode(mode_t mode) const { return calls_->changeMode(number_, mode) == 0; }
  bool synchronize() const {
    return completed([&] { return calls_->synchronize(number_); }) == 0;
  }

  bool write(std::string_view text) const {
    while (!text.empty()) {
      const ssize_t count =
          completed([&] { return calls_->write(number_, text.data(), text.size()); });
      if (count < 0) return false;
      text.remove_prefix(static_cast<std::size_t>(count));
    }
    return true;
  }

 private:
  FileSystemCalls* calls_;
  int number_;
};

std::optional<mode_t> modeOfRegularFile(const fs::path& file) {
  struct stat status{};
  if (::lstat(file.c_str(), &status) != 0 || !S_ISREG(status.st_mode)) return std::nullopt;
  return status.st_mode & permissionBits;
}

/// Whether the path still names the open file.
bool names(const fs::path& path, const OpenFile& file) {
  struct stat named{};
  struct stat opened{};
  return ::lstat(path.c_str(), &named) == 0 && ::fstat(file.number(), &opened) == 0 &&
         named.st_dev == opened.st_dev && named.st_ino == opened.st_ino;
}

/// Removes a file that its writer left behind. Whoever holds the lock of a file is the only one to
/// rename or remove it, so what is not locked and still bears its name is nobody's.
bool reclaim(const fs::path& path, FileSystemCalls& calls) {
  const OpenFile leftover(calls, path, O_RDONLY | O_NOFOLLOW | O_NONBLOCK);
  return leftover.isOpen() && leftover.lock() && names(path, leftover) &&
         calls.unlink(path.c_str()) == 0;
}

/// A new file beside the target, under a name that is this writer's own while the file is open.
class Draft {
 public:
  /// Nothing when no such file can be made; `errno` tells why.
  static std::optional<Draft> beside(const fs::path& target, mode_t mode, FileSystemCalls& calls) {
    constexpr int mostDrafts = 100;
    for (int number = 0; number < mostDrafts; ++number) {
      Draft draft(
          target.parent_path() / fmt::format(".{}.saving-{}", target.filename().native(), number),
          mode, calls);
      if (draft.isOwned()) return draft;
      if (errno != EEXIST) return std::nullopt;
    }
    return std::nullopt;
  }

  const OpenFile& file() const { return file_; }

  bool renameTo(const fs::path& target) const {
    return calls_->rename(path_.c_str(), target.c_str()) == 0;
  }

  void discard() const {
    const int code = errno;
    calls_->unlink(path_.c_str());
    errno = code;
  }

 private:
  Draft(fs::path path, mode_t mode, FileSystemCalls& calls)
      : calls_(&calls), path_(std::move(path)), file_(openNew(path_, mode, calls)) {}

  static OpenFile openNew(const fs::path& path, mode_t mode, FileSystemCalls& calls) {
    constexpr int flags = O_WRONLY | O_CREAT | O_EXCL;
    OpenFile file(calls, path, flags, mode);
    if (file.isOpen() || errno != EEXIST) return file;
    if (reclaim(path, calls)) return {calls, path, flags, mode};
    errno = EEXIST;
    return file;
  }

  /// Takes the lock. Before that another writer may have taken the new file for a leftover; then
  /// the name counts as taken. Without locks nothing is ever reclaimed.
  bool isOwned() const {
    if (!file_.isOpen()) return false;
    const bool isReclaimed = !file_.lock() && errno == EWOULDBLOCK;
    if (!isReclaimed && names(path_, file_)) return true;
    errno = EEXIST;
    return false;
  }

  FileSystemCalls* calls_;
  fs::path path_;
  OpenFile file_;
};

bool hasMode(const OpenFile& file, mode_t mode) {
  struct stat status{};
  return ::fstat(file.number(), &status) == 0 && (status.st_mode & permissionBits) == mode;
}

/// Makes the names in a directory last. File systems that cannot do this say so, and there is
/// nothing more to do then.
bool synchronizeNames(const OpenFile& directory) {
  return !directory.isOpen() || directory.synchronize() || errno == EINVAL || errno == ENOTSUP;
}

/// The directory of a file. One that may be written to but not listed cannot be opened, which is no
/// failure: it stays closed with EACCES then.
OpenFile directoryOf(const fs::path& file, FileSystemCalls& calls) {
  const fs::path directory = file.parent_path();
  return {calls, directory.empty() ? "." : directory, O_RDONLY | O_DIRECTORY};
}

bool isUsable(const OpenFile& directory) {
  return directory.isOpen() || errno == EACCES;
}

/// False with `errno` set.
bool replace(const fs::path& file, std::string_view text, FileSystemCalls& calls) {
  const OpenFile directory = directoryOf(file, calls);
  if (!isUsable(directory)) return false;
  const auto mode = modeOfRegularFile(file);
  const auto draft = Draft::beside(file, mode.value_or(newFileMode), calls);
  if (!draft) return false;
  const OpenFile& fresh = draft->file();
  const bool isWhole = (!mode || hasMode(fresh, *mode) || fresh.changeMode(*mode)) &&
                       fresh.write(text) && fresh.synchronize();
  if (!isWhole || !draft->renameTo(file)) {
    draft->discard();
    return false;
  }
  return synchronizeNames(directory);
}

}  // namespace

std::expected<void, PackageError> writeFileAtomically(const fs::path& file, std::string_view text,
                                                      FileSystemCalls& calls) {
  if (!replace(file, text, calls)) return std::unexpected(unwritable(file, causeInWords(errno)));
  return {};
}

std::expected<void, int> writeNewFile(const fs::path& file, std::string_view text, mode_t mode,
                                      FileSystemCalls& calls) {
  const OpenFile directory = directoryOf(file, calls);
  if (!isUsable(directory)) return std::unexpected(errno);
  const OpenFile fresh(calls, file, O_WRONLY | O_CREAT | O_EXCL, mode);
  if (!fresh.isOpen()) return std::unexpected(errno);
  if (fresh.write(text) && fresh.synchronize() && synchronizeNames(directory)) return {};
  const int code = errno;
  calls.unlink(file.c_str());
  return std::unexpected(code);
}

}  // namespace vesk::package
