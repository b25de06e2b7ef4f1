#pragma once

#include <string>

#include "capture/CameraSource.h"

namespace vesk::capture::pipewire {

/// The cameras that PipeWire offers. Every call stands for itself, so that a server that was
/// started anew is found again.
class PipeWireCamera final : public CameraSource {
 public:
  /// @param remote the path of the server's socket, or its name; empty for that of the environment.
  explicit PipeWireCamera(std::string remote = {});

  std::vector<CameraDevice> devices() override;
  /// Waits a second or two for the first frame, so that it can tell why there is none. A camera
  /// that is slower is not refused for it.
  std::expected<std::unique_ptr<Listening>, CameraRefusal> listen(const CameraDevice& device,
                                                                  PixelSize size, OnFrame onFrame,
                                                                  OnEnd onEnd) override;

 private:
  std::string remote_;
};

}  // namespace vesk::capture::pipewire
