#include "capture/v4l2/V4l2Camera.h"

#include <chrono>
#include <stop_token>
#include <thread>
#include <utility>

#include "capture/camera/FrameStamp.h"
#include "capture/camera/UprightPicture.h"
#include "capture/v4l2/VideoDevice.h"

namespace vesk::capture::v4l2 {
namespace {

/// Reads a camera on a thread of its own.
class Reading final : public Listening {
 public:
  Reading(VideoDevice device, const VideoDevice::Stream& stream, CameraSource::OnFrame onFrame,
          CameraSource::OnEnd onEnd)
      : device_{std::move(device)},
        stream_{stream},
        onFrame_{std::move(onFrame)},
        onEnd_{std::move(onEnd)},
        thread_{[this](const std::stop_token& stop) { run(stop); }} {}

 private:
  void run(const std::stop_token& stop) {
    while (!stop.stop_requested()) {
      const auto outcome = device_.next([this](const auto& frame) { deliver(frame); });
      if (outcome != VideoDevice::Outcome::gone) continue;
      onEnd_({"摄像头已断开"});
      return;
    }
  }

  void deliver(const VideoDevice::Frame& frame) {
    if (frame.isDamaged) return;
    const media::HostTime arrival = std::chrono::steady_clock::now().time_since_epoch();
    const camera::RawPicture::Piece piece{.bytes = frame.bytes, .stride = stream_.stride};
    const auto pixels = picture_.convert(
        {.layout = stream_.format.layout, .size = stream_.format.size, .pieces = {&piece, 1}});
    if (!pixels) return;
    onFrame_({.stamp = camera::frameStamp(frame.taken, arrival), .pixels = *pixels});
  }

  VideoDevice device_;
  VideoDevice::Stream stream_;
  CameraSource::OnFrame onFrame_;
  CameraSource::OnEnd onEnd_;
  camera::UprightPicture picture_;
  std::jthread thread_;  ///< ends before the rest goes
};

}  // namespace

V4l2Camera::V4l2Camera(VideoDeviceCalls& calls) : calls_{calls} {}

std::vector<CameraDevice> V4l2Camera::devices() {
  std::vector<CameraDevice> devices;
  for (const std::string& path : calls_.paths()) {
    auto device = VideoDevice::open(path, calls_);
    if (!device) continue;
    if (auto name = device->cameraName()) {
      devices.push_back({.id = path, .name = std::move(*name), .type = "V4L2"});
    }
  }
  return devices;
}

std::expected<std::unique_ptr<Listening>, CameraRefusal> V4l2Camera::listen(
    const CameraDevice& device, PixelSize size, OnFrame onFrame, OnEnd onEnd) {
  auto opened = VideoDevice::open(device.id, calls_);
  if (!opened) return std::unexpected(opened.error());
  const auto format = camera::bestFormat(opened->formats(size), size);
  if (!format) {
    return std::unexpected(CameraRefusal{.message = "摄像头没有可用的画面格式"});
  }
  const auto stream = opened->start(*format);
  if (!stream) return std::unexpected(stream.error());
  return std::make_unique<Reading>(std::move(*opened), *stream, std::move(onFrame),
                                   std::move(onEnd));
}

}  // namespace vesk::capture::v4l2
