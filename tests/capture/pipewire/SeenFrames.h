#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "capture/CameraSource.h"

namespace vesk::capture::pipewire::test {

/// Looks through a camera and keeps the latest picture.
class SeenFrames {
 public:
  /// @throws std::runtime_error with the source's words when it refuses.
  SeenFrames(CameraSource& source, const CameraDevice& device, PixelSize size);

  struct Frame {
    media::HostTime stamp{};
    media::HostTime arrival{};
    PixelSize size;
  };

  [[nodiscard]] std::vector<Frame> frames() const;
  /// Blue, green, red of the latest.
  [[nodiscard]] std::array<int, 3> pixel(int x, int y) const;
  [[nodiscard]] std::vector<std::string> ends() const;

 private:
  mutable std::mutex mutex_;  ///< guards what follows
  std::vector<Frame> frames_;
  std::vector<std::uint8_t> latest_;
  std::vector<std::string> ends_;
  std::unique_ptr<Listening> listening_;
};

}  // namespace vesk::capture::pipewire::test
