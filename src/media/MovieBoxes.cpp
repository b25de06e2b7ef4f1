#include "media/MovieBoxes.h"

#include <array>
#include <cstddef>
#include <cstdint>
#include <fstream>
#include <system_error>

namespace vesk::media {
namespace {

constexpr std::uint64_t shortHeader = 8;
constexpr std::uint64_t longHeader = 16;
constexpr std::uint64_t sizeIsLong = 1;

std::uint64_t bigEndian(const std::array<char, longHeader>& bytes, std::size_t offset,
                        std::size_t count) {
  std::uint64_t value = 0;
  for (std::size_t i = 0; i < count; ++i) {
    value = value << 8 | static_cast<unsigned char>(bytes[offset + i]);
  }
  return value;
}

}  // namespace

bool endsInsideABox(const std::filesystem::path& file) {
  std::error_code failure;
  const std::uint64_t fileSize = std::filesystem::file_size(file, failure);
  std::ifstream stream(file, std::ios::binary);
  if (failure || !stream) {
    return false;
  }
  std::uint64_t position = 0;
  while (position + shortHeader <= fileSize) {
    std::array<char, longHeader> header{};
    stream.clear();
    stream.seekg(static_cast<std::streamoff>(position));
    stream.read(header.data(), header.size());
    std::uint64_t size = bigEndian(header, 0, 4);
    if (size == sizeIsLong) {
      size = bigEndian(header, 8, 8);
    }
    if (size < shortHeader) {
      return false;  // a box that runs to the end of the file by definition, or no box at all
    }
    if (size > fileSize - position) {
      return true;
    }
    position += size;
  }
  return false;
}

}  // namespace vesk::media
