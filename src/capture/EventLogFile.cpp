#include "capture/EventLogFile.h"

#include <fcntl.h>
#include <sys/stat.h>

#include <cerrno>
#include <utility>

#include "package/FileError.h"

namespace vesk::capture {
namespace {

constexpr mode_t privateMode = S_IRUSR | S_IWUSR;

/// Repeats a call that a signal cut short.
template <typename Call>
auto completed(Call call) {
  auto result = call();
  while (result < 0 && errno == EINTR) result = call();
  return result;
}

std::unexpected<package::PackageError> failure(const std::filesystem::path& path) {
  return std::unexpected(package::unwritable(path, package::causeInWords(errno)));
}

}  // namespace

std::expected<EventLogFile, package::PackageError> EventLogFile::create(
    std::filesystem::path path, package::FileSystemCalls& calls) {
  // Without O_NONBLOCK a pipe of that name would make the start wait for a reader.
  constexpr int flags = O_WRONLY | O_CREAT | O_TRUNC | O_CLOEXEC | O_NOFOLLOW | O_NONBLOCK;
  const int descriptor = completed([&] { return calls.open(path.c_str(), flags, privateMode); });
  if (descriptor < 0) return failure(path);
  EventLogFile file{std::move(path), descriptor, calls};
  // A file that stood there already has kept its mode.
  if (calls.changeMode(descriptor, privateMode) != 0) return failure(file.path_);
  return file;
}

EventLogFile::EventLogFile(std::filesystem::path path, int descriptor,
                           package::FileSystemCalls& calls)
    : path_{std::move(path)}, descriptor_{descriptor}, calls_{&calls} {}

EventLogFile::EventLogFile(EventLogFile&& other) noexcept
    : path_{std::move(other.path_)},
      descriptor_{std::exchange(other.descriptor_, -1)},
      calls_{other.calls_},
      endsInLine_{other.endsInLine_} {}

EventLogFile::~EventLogFile() {
  if (descriptor_ >= 0) calls_->close(descriptor_);
}

std::expected<void, package::PackageError> EventLogFile::append(std::string_view lines) {
  const bool isWritten = (endsInLine_ || write("\n")) && write(lines);
  endsInLine_ = isWritten;
  if (!isWritten) return failure(path_);
  return {};
}

bool EventLogFile::write(std::string_view text) {
  while (!text.empty()) {
    const ssize_t count =
        completed([&] { return calls_->write(descriptor_, text.data(), text.size()); });
    if (count <= 0) return false;
    text.remove_prefix(static_cast<std::size_t>(count));
  }
  return true;
}

}  // namespace vesk::capture
