#pragma once

#include <cstdint>
#include <string>

namespace vesk::capture {

/// Why the screen cannot be recorded. `message` is for the user.
struct CaptureError {
  enum class Kind : std::uint8_t {
    displayNotFound,
    writerSetupFailed,
    noDisplayAvailable,
    streamFailed,  ///< the screen's pictures cannot be had
  };

  Kind kind = Kind::noDisplayAvailable;
  std::string message;
  bool operator==(const CaptureError&) const = default;

  static CaptureError displayNotFound(std::uint32_t id);
  static CaptureError writerSetupFailed(const std::string& cause);
  static CaptureError noDisplayAvailable();
  static CaptureError streamFailed(std::string message);
};

}  // namespace vesk::capture
