#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace vesk::package {

/// Which mounted file system something lies on. One device mounted in two places is two mounts:
/// nothing can be renamed from one into the other.
struct Mount {
  std::uint64_t device = 0;
  std::uint64_t number = 0;  ///< of the mount, 0 where the kernel does not tell
  bool operator==(const Mount&) const = default;
};

/// The mount of an existing path, links followed.
std::optional<Mount> mountOf(const std::filesystem::path& path);

}  // namespace vesk::package
