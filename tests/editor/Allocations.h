#pragma once

#include <cstdint>

namespace vesk::editor {

/// How often the calling thread has allocated memory with `new` since it began.
[[nodiscard]] std::int64_t allocationsOfThisThread();

}  // namespace vesk::editor
