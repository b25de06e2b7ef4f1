#pragma once

#include <cstddef>
#include <cstdint>
#include <expected>
#include <filesystem>
#include <span>
#include <vector>

namespace vesk::media {

/// A file that is read and changed at any place. Failures are errno values.
class RandomAccessFile {
 public:
  /// Opens an existing file for reading and writing.
  [[nodiscard]] static std::expected<RandomAccessFile, int> open(const std::filesystem::path& file);

  RandomAccessFile(const RandomAccessFile&) = delete;
  RandomAccessFile(RandomAccessFile&& other) noexcept;
  RandomAccessFile& operator=(const RandomAccessFile&) = delete;
  RandomAccessFile& operator=(RandomAccessFile&&) = delete;
  ~RandomAccessFile();

  [[nodiscard]] std::uint64_t size() const { return size_; }

  /// The bytes from `position` on, `count` or as many as there are.
  [[nodiscard]] std::expected<std::vector<std::uint8_t>, int> read(std::uint64_t position,
                                                                   std::size_t count) const;
  [[nodiscard]] std::expected<void, int> write(std::uint64_t position,
                                               std::span<const std::uint8_t> bytes);
  [[nodiscard]] std::expected<void, int> truncate(std::uint64_t size);
  /// Returns when all that was written will last through a failure of the power.
  [[nodiscard]] std::expected<void, int> synchronize();

 private:
  RandomAccessFile(int descriptor, std::uint64_t size) : descriptor_(descriptor), size_(size) {}

  int descriptor_;
  std::uint64_t size_;
};

}  // namespace vesk::media
