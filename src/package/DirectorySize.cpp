#include "package/DirectorySize.h"

#include <sys/stat.h>

#include <cstdlib>
#include <system_error>

namespace vesk::package {

namespace fs = std::filesystem;

namespace {

constexpr int deepestLevel = 64;

/// 0 for a directory and for what cannot be looked at.
std::int64_t allocatedSizeOfFile(const fs::path& file) {
  constexpr std::int64_t blockSize = 512;
  struct stat status{};
  if (::lstat(file.c_str(), &status) != 0 || S_ISDIR(status.st_mode)) return 0;
  return std::int64_t{status.st_blocks} * blockSize;
}

}  // namespace

std::int64_t allocatedSize(const fs::path& directory) {
  std::int64_t sum = 0;
  std::error_code error;
  fs::recursive_directory_iterator entry(directory, fs::directory_options::skip_permission_denied,
                                         error);
  for (const fs::recursive_directory_iterator end; !error && entry != end; entry.increment(error)) {
    if (entry.depth() >= deepestLevel) entry.disable_recursion_pending();
    sum = sumOfSizes(sum, allocatedSizeOfFile(entry->path()));
  }
  return sum;
}

std::int64_t sumOfSizes(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  if (__builtin_add_overflow(a, b, &sum)) std::abort();
  return sum;
}

}  // namespace vesk::package
