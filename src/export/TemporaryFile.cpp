#include "export/TemporaryFile.h"

#include <fmt/format.h>

#include <cstdint>
#include <random>
#include <string>
#include <system_error>

namespace vesk::exporting {
namespace {

/// A random UUID (RFC 9562, version 4).
std::string newUuid() {
  std::random_device device;
  const auto bits = [&](unsigned count) { return std::uint64_t{device()} & ((1ULL << count) - 1); };
  return fmt::format("{:08X}-{:04X}-4{:03X}-{:04X}-{:08X}{:04X}", bits(32), bits(16), bits(12),
                     0x8000 | bits(14), bits(32), bits(16));
}

}  // namespace

TemporaryFile::TemporaryFile(const std::filesystem::path& folder, std::string_view prefix,
                             std::string_view extension)
    : path_(folder / fmt::format("{}{}{}", prefix, newUuid(), extension)) {}

TemporaryFile::~TemporaryFile() {
  if (!isKept_) {
    std::error_code ignored;
    std::filesystem::remove(path_, ignored);
  }
}

}  // namespace vesk::exporting
