#include "app/CameraListCommand.h"

#include <fmt/format.h>
#include <unistd.h>

#include <filesystem>
#include <string>
#include <system_error>
#include <vector>

namespace vesk::app {
namespace {

namespace fs = std::filesystem;

/// Whether there are cameras of which this user may open none. A Linux desktop asks nobody before a
/// program outside a sandbox uses a camera; only the rights of its device decide.
bool isDenied() {
  bool isThere = false;
  std::error_code failure;
  for (const auto& entry : fs::directory_iterator("/dev", failure)) {
    if (!entry.path().filename().string().starts_with("video")) continue;
    isThere = true;
    if (access(entry.path().c_str(), R_OK | W_OK) == 0) return false;
  }
  return isThere;
}

}  // namespace

int listCameras(const CommandContext& context) {
  const auto devices = context.openCameras()->devices();
  const bool isAuthorised = !devices.empty() || !isDenied();
  fmt::print(context.out, "摄像头权限：{}\n", isAuthorised ? "已授权" : "已拒绝");
  fmt::print(context.out, "可用设备 {} 个：\n", devices.size());
  for (const auto& device : devices) {
    fmt::print(context.out, "  · {}  [{}]\n", device.name, device.type);
  }
  if (!isAuthorised) fmt::print(context.out, "\n请求授权中…\n  → 被拒绝\n");
  return 0;
}

}  // namespace vesk::app
