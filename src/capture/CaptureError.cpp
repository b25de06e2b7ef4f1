#include "capture/CaptureError.h"

#include <fmt/format.h>

#include <utility>

namespace vesk::capture {

CaptureError CaptureError::displayNotFound(std::uint32_t id) {
  return {.kind = Kind::displayNotFound,
          .message = fmt::format("找不到显示器 {}，可能已被拔出", id)};
}

CaptureError CaptureError::writerSetupFailed(const std::string& cause) {
  return {.kind = Kind::writerSetupFailed, .message = "无法创建视频写入器：" + cause};
}

CaptureError CaptureError::noDisplayAvailable() {
  return {.kind = Kind::noDisplayAvailable, .message = "没有可用的显示器"};
}

CaptureError CaptureError::streamFailed(std::string message) {
  return {.kind = Kind::streamFailed, .message = std::move(message)};
}

}  // namespace vesk::capture
