#include "capture/pipewire/CameraFailure.h"

namespace vesk::capture::pipewire {

CameraRefusal cameraFailure(const std::string& error) {
  if (error.find("busy") != std::string::npos) {
    return {.cause = CameraRefusal::Cause::busy, .message = "摄像头正被其他程序使用"};
  }
  return {.cause = CameraRefusal::Cause::other, .message = "摄像头停止了工作"};
}

}  // namespace vesk::capture::pipewire
