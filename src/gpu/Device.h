#pragma once

#include <expected>
#include <memory>
#include <string>
#include <vector>

#include "gpu/GpuError.h"

namespace vesk::gpu {

/// True when the libraries that carry OpenGL are installed.
bool isEglPresent();

/// True when the current context draws on the processor instead of a graphics card.
bool isSoftwareRenderer();

/// What the context that is current on this thread can do, and what its driver complains about.
/// Owns no window and no context: whoever made the context current keeps it so while the device and
/// the objects made on it live.
class Device {
 public:
  struct Capabilities {
    std::string renderer;
    std::string version;
    bool isSoftware = false;
    int maxTextureSize = 0;
    float maxAnisotropy = 1;  ///< 1 where filtering would not pay
  };

  /// Fails when no context is current or its version is below 4.3.
  static std::expected<Device, GpuError> current();

  Device(Device&&) noexcept;
  Device& operator=(Device&&) noexcept;
  Device(const Device&) = delete;
  Device& operator=(const Device&) = delete;
  ~Device();

  const Capabilities& capabilities() const { return capabilities_; }

  /// Errors and warnings of the driver since creation; only a debug context gives any.
  const std::vector<std::string>& debugMessages() const;

 private:
  Device(Capabilities capabilities, std::unique_ptr<std::vector<std::string>> messages);

  Capabilities capabilities_;
  std::unique_ptr<std::vector<std::string>> messages_;  ///< at a fixed address for the callback
};

}  // namespace vesk::gpu
