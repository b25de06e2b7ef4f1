#include "package/HugePages.h"

#include <sys/mman.h>
#include <unistd.h>

#include <memory>

namespace vesk::package {

void preferHugePages(void* data, std::size_t size) {
  constexpr std::size_t worthwhile = std::size_t{4} << 20;
  const auto pageSize = static_cast<std::size_t>(::sysconf(_SC_PAGESIZE));
  if (size < worthwhile || std::align(pageSize, worthwhile / 2, data, size) == nullptr) return;
  ::madvise(data, size / pageSize * pageSize, MADV_HUGEPAGE);
}

}  // namespace vesk::package
