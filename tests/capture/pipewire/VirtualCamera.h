#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "capture/Geometry.h"
#include "capture/camera/CameraFormat.h"
#include "capture/pipewire/Moments.h"
#include "media/HostTime.h"
#include "media/pipewire/Connection.h"

namespace vesk::capture::pipewire::test {

/// A camera that paints its frames. It goes with the object.
class VirtualCamera {
 public:
  /// Fills a frame, rows from the top without anything between them; `bytes` is as long as the
  /// frame. Runs on the camera's thread.
  using Paint = std::function<void(std::span<std::uint8_t> bytes, media::HostTime taken)>;

  struct Options {
    std::string name;
    std::string description;
    camera::PixelLayout layout = camera::PixelLayout::bgrx;  ///< bgrx, yuy2 or mjpeg
    std::vector<PixelSize> sizes{{1280, 720}};               ///< those that it offers
    int framesPerSecond = 30;
    int priority = 1000;
    bool isBroken = false;     ///< cannot be read from
    bool hasStamps = true;     ///< tells when a frame was taken
    std::uint32_t turned = 0;  ///< a spa_meta_videotransform_value
  };

  VirtualCamera(const std::string& remote, const Options& options, Paint paint);
  VirtualCamera(const VirtualCamera&) = delete;
  VirtualCamera& operator=(const VirtualCamera&) = delete;
  ~VirtualCamera();

 private:
  class Stream;
  std::unique_ptr<media::pipewire::Connection> connection_;
  std::unique_ptr<Stream> stream_;
};

/// Paints a bgrx frame white at the given moments, black otherwise.
VirtualCamera::Paint flashes(Moments moments);

}  // namespace vesk::capture::pipewire::test
