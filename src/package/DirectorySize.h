#pragma once

#include <cstdint>
#include <filesystem>

namespace vesk::package {

/// The bytes that the files below a directory occupy on the disk, hidden ones included. Links
/// inside it are not followed, and directories more than 64 levels down are left out. What cannot
/// be listed counts as empty.
std::int64_t allocatedSize(const std::filesystem::path& directory);

/// The sum of two sizes. More than 63 bits of bytes exist on no disk: that ends the process.
std::int64_t sumOfSizes(std::int64_t a, std::int64_t b);

}  // namespace vesk::package
