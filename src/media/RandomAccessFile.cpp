#include "media/RandomAccessFile.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <utility>

namespace vesk::media {

std::expected<RandomAccessFile, int> RandomAccessFile::open(const std::filesystem::path& file) {
  const int descriptor = ::open(file.c_str(), O_RDWR | O_CLOEXEC);
  if (descriptor < 0) {
    return std::unexpected(errno);
  }
  RandomAccessFile opened(descriptor, 0);
  struct stat status{};
  if (::fstat(descriptor, &status) != 0) {
    return std::unexpected(errno);
  }
  opened.size_ = static_cast<std::uint64_t>(status.st_size);
  return opened;
}

RandomAccessFile::RandomAccessFile(RandomAccessFile&& other) noexcept
    : descriptor_(std::exchange(other.descriptor_, -1)), size_(other.size_) {}

RandomAccessFile::~RandomAccessFile() {
  if (descriptor_ >= 0) {
    ::close(descriptor_);
  }
}

std::expected<std::vector<std::uint8_t>, int> RandomAccessFile::read(std::uint64_t position,
                                                                     std::size_t count) const {
  const std::uint64_t available = position < size_ ? size_ - position : 0;
  std::vector<std::uint8_t> bytes(
      static_cast<std::size_t>(std::min<std::uint64_t>(count, available)));
  std::size_t done = 0;
  while (done < bytes.size()) {
    const ssize_t step = ::pread(descriptor_, bytes.data() + done, bytes.size() - done,
                                 static_cast<off_t>(position + done));
    if (step < 0 && errno != EINTR) {
      return std::unexpected(errno);
    }
    if (step == 0) {
      return std::unexpected(EIO);  // somebody has cut the file
    }
    done += static_cast<std::size_t>(std::max<ssize_t>(step, 0));
  }
  return bytes;
}

std::expected<void, int> RandomAccessFile::write(std::uint64_t position,
                                                 std::span<const std::uint8_t> bytes) {
  while (!bytes.empty()) {
    const ssize_t step =
        ::pwrite(descriptor_, bytes.data(), bytes.size(), static_cast<off_t>(position));
    if (step < 0 && errno != EINTR) {
      return std::unexpected(errno);
    }
    const auto done = static_cast<std::size_t>(std::max<ssize_t>(step, 0));
    bytes = bytes.subspan(done);
    position += done;
    size_ = std::max(size_, position);
  }
  return {};
}

std::expected<void, int> RandomAccessFile::truncate(std::uint64_t size) {
  if (::ftruncate(descriptor_, static_cast<off_t>(size)) != 0) {
    return std::unexpected(errno);
  }
  size_ = size;
  return {};
}

std::expected<void, int> RandomAccessFile::synchronize() {
  if (::fdatasync(descriptor_) != 0) {
    return std::unexpected(errno);
  }
  return {};
}

}  // namespace vesk::media
