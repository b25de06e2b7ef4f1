#include "package/Mount.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <sys/sysmacros.h>

namespace vesk::package {

std::optional<Mount> mountOf(const std::filesystem::path& path) {
  struct statx status{};
  if (::statx(AT_FDCWD, path.c_str(), 0, STATX_MNT_ID, &status) != 0) return std::nullopt;
  const bool knowsNumber = (status.stx_mask & STATX_MNT_ID) != 0;
  return Mount{.device = ::makedev(status.stx_dev_major, status.stx_dev_minor),
               .number = knowsNumber ? status.stx_mnt_id : 0};
}

}  // namespace vesk::package
