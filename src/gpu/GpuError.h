#pragma once

#include <string>

namespace vesk::gpu {

/// Why the graphics processor could not be used. `message` is a sentence for the log.
struct GpuError {
  enum class Kind { noDisplay, noContext, versionTooLow, compileFailed, outOfMemory, unsupported };
  Kind kind = Kind::noContext;
  std::string message;
  bool operator==(const GpuError&) const = default;
};

}  // namespace vesk::gpu
