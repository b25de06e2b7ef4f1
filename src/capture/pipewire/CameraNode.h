#pragma once

#include <functional>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "capture/camera/CameraFormat.h"
#include "media/pipewire/Connection.h"

namespace vesk::capture::pipewire {

/// A camera as the server has it. To be used under the connection's lock, held once.
class CameraNode {
 public:
  /// In the words of the server or the driver.
  using OnError = std::function<void(const std::string& error)>;

  /// @param onError is called on the connection's thread when the camera fails from now on.
  CameraNode(media::pipewire::Connection& connection, std::uint32_t id, PixelSize wanted,
             OnError onError);
  CameraNode(const CameraNode&) = delete;
  CameraNode& operator=(const CameraNode&) = delete;
  ~CameraNode();

  /// Waits for what the camera offers.
  std::vector<camera::CameraFormat> formats();

 private:
  class Proxy;
  media::pipewire::Connection& connection_;
  std::unique_ptr<Proxy> proxy_;
};

}  // namespace vesk::capture::pipewire
