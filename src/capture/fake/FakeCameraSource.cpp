#include "capture/fake/FakeCameraSource.h"

#include <algorithm>
#include <utility>

#include "capture/fake/FakePicture.h"

namespace vesk::capture::fake {

std::vector<CameraDevice> FakeCameraSource::devices() {
  const std::scoped_lock lock{mutex_};
  return devices_;
}

std::expected<std::unique_ptr<Listening>, CameraRefusal> FakeCameraSource::listen(
    const CameraDevice& device, PixelSize size, OnFrame onFrame, OnEnd onEnd) {
  {
    const std::scoped_lock lock{mutex_};
    lastRequest_ = {.device = device, .size = size};
    if (refusal_) return std::unexpected(*refusal_);
    if (std::ranges::find(devices_, device) == devices_.end()) {
      return std::unexpected(CameraRefusal{.message = "没有这个摄像头"});
    }
  }
  return streams_.open(std::move(onFrame), std::move(onEnd));
}

void FakeCameraSource::show(media::HostTime stamp, std::uint32_t colour) const {
  const auto request = lastRequest();
  if (!request) return;
  const FakePicture picture{request->size, colour};
  deliver({.stamp = stamp, .pixels = picture.view()});
}

void FakeCameraSource::refuse(std::optional<CameraRefusal> refusal) {
  const std::scoped_lock lock{mutex_};
  refusal_ = std::move(refusal);
}

void FakeCameraSource::setDevices(std::vector<CameraDevice> devices) {
  const std::scoped_lock lock{mutex_};
  devices_ = std::move(devices);
}

std::optional<FakeCameraSource::Request> FakeCameraSource::lastRequest() const {
  const std::scoped_lock lock{mutex_};
  return lastRequest_;
}

}  // namespace vesk::capture::fake
