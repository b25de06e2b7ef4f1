#pragma once

#include "capture/CameraSource.h"
#include "capture/v4l2/VideoDeviceCalls.h"

namespace vesk::capture::v4l2 {

/// The cameras that the kernel has, for machines where nothing else offers them.
class V4l2Camera final : public CameraSource {
 public:
  /// @param calls must outlive the cameras and every stream of them.
  explicit V4l2Camera(VideoDeviceCalls& calls = systemVideoDeviceCalls());

  std::vector<CameraDevice> devices() override;
  std::expected<std::unique_ptr<Listening>, CameraRefusal> listen(const CameraDevice& device,
                                                                  PixelSize size, OnFrame onFrame,
                                                                  OnEnd onEnd) override;

 private:
  VideoDeviceCalls& calls_;
};

}  // namespace vesk::capture::v4l2
