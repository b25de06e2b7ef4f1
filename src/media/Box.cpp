#include "media/Box.h"

#include <algorithm>
#include <cassert>

namespace vesk::media {
namespace {

constexpr std::size_t headerSize = 8;
constexpr std::size_t longHeaderSize = 16;

std::string_view textOf(ByteView bytes) {
  return {reinterpret_cast<const char*>(bytes.data()), bytes.size()};
}

/// The box at the front of bytes.
std::optional<Box> firstBox(ByteView bytes) {
  BoxReader header(bytes);
  std::uint64_t size = header.take32();
  const std::string_view type = textOf(header.takeBytes(4));
  std::size_t contentAt = headerSize;
  if (size == sizeIsLong) {
    size = header.take64();
    contentAt = longHeaderSize;
  }
  if (header.ranOut() || size < contentAt || size > bytes.size()) {
    return std::nullopt;
  }
  const ByteView whole = bytes.first(static_cast<std::size_t>(size));
  return Box{type, whole.subspan(contentAt), whole};
}

}  // namespace

std::optional<std::vector<Box>> boxesIn(ByteView bytes) {
  std::vector<Box> boxes;
  while (!bytes.empty()) {
    const auto box = firstBox(bytes);
    if (!box) {
      return std::nullopt;
    }
    boxes.push_back(*box);
    bytes = bytes.subspan(box->whole.size());
  }
  return boxes;
}

std::optional<ByteView> contentOf(ByteView parent, std::string_view type) {
  while (const auto box = firstBox(parent)) {
    if (box->type == type) {
      return box->content;
    }
    parent = parent.subspan(box->whole.size());
  }
  return std::nullopt;
}

ByteView BoxReader::takeBytes(std::size_t count) {
  ranOut_ = ranOut_ || count > rest_.size();
  const ByteView taken = rest_.first(std::min(count, rest_.size()));
  rest_ = rest_.subspan(taken.size());
  return taken;
}

std::uint64_t BoxReader::take(std::size_t count) {
  std::uint64_t value = 0;
  for (const std::uint8_t byte : takeBytes(count)) {
    value = value << 8 | byte;
  }
  return ranOut_ ? 0 : value;
}

void BoxWriter::put(std::uint64_t value, std::size_t count) {
  for (std::size_t i = count; i-- > 0;) {
    bytes_.push_back(static_cast<std::uint8_t>(value >> (8 * i)));
  }
}

std::size_t BoxWriter::open(std::string_view type) {
  assert(type.size() == 4);
  const std::size_t start = bytes_.size();
  put32(0);
  bytes_.insert(bytes_.end(), type.begin(), type.end());
  return start;
}

void BoxWriter::close(std::size_t start) {
  const std::size_t size = bytes_.size() - start;
  for (std::size_t i = 0; i < 4; ++i) {
    bytes_[start + i] = static_cast<std::uint8_t>(size >> (8 * (3 - i)));
  }
}

}  // namespace vesk::media
