#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace vesk::media {

using ByteView = std::span<const std::uint8_t>;

/// In place of a box's size: a size of eight bytes follows its type.
inline constexpr std::uint64_t sizeIsLong = 1;

/// A box of a QuickTime or MPEG-4 file (ISO/IEC 14496-12, section 4.2) that lies in memory.
struct Box {
  std::string_view type;  ///< four characters
  ByteView content;       ///< what follows the header
  ByteView whole;
};

/// The boxes that fill `bytes` one after another; nothing where they do not fill them.
[[nodiscard]] std::optional<std::vector<Box>> boxesIn(ByteView bytes);

/// The content of the first box of a type inside another box; nothing without one.
[[nodiscard]] std::optional<ByteView> contentOf(ByteView parent, std::string_view type);

/// Takes big-endian numbers from the front of bytes. Where these run out, the rest reads as zeros
/// and `ranOut` says so.
class BoxReader {
 public:
  explicit BoxReader(ByteView bytes) : rest_(bytes) {}

  std::uint32_t take32() { return static_cast<std::uint32_t>(take(4)); }
  std::uint64_t take64() { return take(8); }
  ByteView takeBytes(std::size_t count);
  [[nodiscard]] ByteView rest() const { return rest_; }
  [[nodiscard]] bool ranOut() const { return ranOut_; }

 private:
  std::uint64_t take(std::size_t count);

  ByteView rest_;
  bool ranOut_ = false;
};

/// Puts boxes together.
class BoxWriter {
 public:
  void put32(std::uint64_t value) { put(value, 4); }
  void put64(std::uint64_t value) { put(value, 8); }
  void put(ByteView bytes) { bytes_.insert(bytes_.end(), bytes.begin(), bytes.end()); }

  /// A box with what `fill` puts.
  template <typename Fill>
  void box(std::string_view type, const Fill& fill) {
    const std::size_t start = open(type);
    fill();
    close(start);
  }

  [[nodiscard]] const std::vector<std::uint8_t>& bytes() const { return bytes_; }

 private:
  void put(std::uint64_t value, std::size_t count);
  std::size_t open(std::string_view type);
  void close(std::size_t start);

  std::vector<std::uint8_t> bytes_;
};

}  // namespace vesk::media
