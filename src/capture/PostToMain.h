#pragma once

#include <functional>

namespace vesk::capture {

/// Calls a function on the main thread, later. May be called from any thread.
using PostToMain = std::function<void(std::function<void()>)>;

}  // namespace vesk::capture
