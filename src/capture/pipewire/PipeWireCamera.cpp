#include "capture/pipewire/PipeWireCamera.h"

#include <utility>

#include "capture/pipewire/CameraStream.h"
#include "capture/pipewire/Registry.h"

namespace vesk::capture::pipewire {

using media::pipewire::Connection;

PipeWireCamera::PipeWireCamera(std::string remote) : remote_{std::move(remote)} {}

std::vector<CameraDevice> PipeWireCamera::devices() {
  const auto connection = Connection::openAnswered(remote_);
  if (!connection) return {};
  const Registry registry{*connection};
  const Connection::Lock lock{*connection};
  std::vector<CameraDevice> devices;
  for (const Node& node : registry.nodesOf(cameraClass)) {
    devices.push_back({.id = node.name, .name = node.description, .type = "PipeWire"});
  }
  return devices;
}

std::expected<std::unique_ptr<Listening>, CameraRefusal> PipeWireCamera::listen(
    const CameraDevice& device, PixelSize size, OnFrame onFrame, OnEnd onEnd) {
  return CameraStream::open({.nodeName = device.id, .size = size, .remote = remote_},
                            std::move(onFrame), std::move(onEnd));
}

}  // namespace vesk::capture::pipewire
