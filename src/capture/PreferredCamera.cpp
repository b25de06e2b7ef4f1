#include "capture/PreferredCamera.h"

#include <algorithm>
#include <utility>

namespace vesk::capture {

PreferredCamera::PreferredCamera(std::vector<std::unique_ptr<CameraSource>> sources)
    : sources_{std::move(sources)} {}

std::vector<CameraDevice> PreferredCamera::devices() {
  for (const auto& source : sources_) {
    if (auto devices = source->devices(); !devices.empty()) return devices;
  }
  return {};
}

std::expected<std::unique_ptr<Listening>, CameraRefusal> PreferredCamera::listen(
    const CameraDevice& device, PixelSize size, OnFrame onFrame, OnEnd onEnd) {
  for (const auto& source : sources_) {
    const auto devices = source->devices();
    const bool isHere = std::ranges::any_of(
        devices, [&](const CameraDevice& known) { return known.id == device.id; });
    if (isHere) return source->listen(device, size, std::move(onFrame), std::move(onEnd));
  }
  return std::unexpected(CameraRefusal{.cause = CameraRefusal::Cause::other,
                                       .message = "找不到摄像头“" + device.name + "”"});
}

}  // namespace vesk::capture
