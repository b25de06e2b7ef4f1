#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <functional>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "capture/CameraSource.h"
#include "capture/camera/CameraFormat.h"
#include "capture/v4l2/VideoDeviceCalls.h"

namespace vesk::capture::v4l2 {

/// An open camera. To be used by one thread at a time; closed with the object.
class VideoDevice {
 public:
  /// A frame in the device's memory.
  struct Frame {
    std::span<const std::uint8_t> bytes;
    std::optional<media::HostTime> taken;  ///< where the device tells it by the host's clock
    bool isDamaged = false;
  };
  /// How the frames come.
  struct Stream {
    camera::CameraFormat format;
    std::ptrdiff_t stride = 0;  ///< 0 of compressed frames
  };
  enum class Outcome : std::uint8_t { frame, nothingYet, gone };

  /// @param calls must outlive the device.
  [[nodiscard]] static std::expected<VideoDevice, CameraRefusal> open(const std::string& path,
                                                                      VideoDeviceCalls& calls);
  VideoDevice(VideoDevice&& other) noexcept;
  VideoDevice& operator=(VideoDevice&&) = delete;
  VideoDevice(const VideoDevice&) = delete;
  VideoDevice& operator=(const VideoDevice&) = delete;
  ~VideoDevice();

  /// What the user calls it; nothing when it takes no pictures.
  [[nodiscard]] std::optional<std::string> cameraName();
  /// Those that can be read here.
  [[nodiscard]] std::vector<camera::CameraFormat> formats(PixelSize wanted);

  /// Begins. To be called once.
  [[nodiscard]] std::expected<Stream, CameraRefusal> start(const camera::CameraFormat& format);
  /// Waits for a frame, a tenth of a second at most, and hands out the latest of those there are.
  Outcome next(const std::function<void(const Frame&)>& onFrame);

 private:
  struct Memory {
    void* data = nullptr;
    std::size_t size = 0;
  };

  VideoDevice(int descriptor, VideoDeviceCalls& calls);
  bool control(unsigned long request, void* argument);
  std::expected<Stream, CameraRefusal> setFormat(const camera::CameraFormat& format);
  void setRate(int framesPerSecond);
  bool mapMemory();
  std::vector<PixelSize> sizes(std::uint32_t fourcc, PixelSize wanted);
  double highestRate(std::uint32_t fourcc, PixelSize size);

  int descriptor_;
  VideoDeviceCalls* calls_;
  std::vector<Memory> memory_;
};

}  // namespace vesk::capture::v4l2
