#pragma once

#include <cstddef>

namespace vesk::package {

/// Asks the kernel for huge pages behind memory that is about to be filled. Touching tens of
/// megabytes for the first time in small pages can cost more than computing what goes there. It is
/// a hint: nothing depends on it, and small blocks are left alone.
void preferHugePages(void* data, std::size_t size);

}  // namespace vesk::package
