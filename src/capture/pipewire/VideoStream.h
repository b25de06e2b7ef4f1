#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string>

#include "capture/CameraSource.h"
#include "capture/camera/CameraFormat.h"
#include "capture/pipewire/Registry.h"
#include "media/pipewire/Connection.h"

namespace vesk::capture::pipewire {

/// The frames of a camera, made to what a CameraFrame wants. To be used under the connection's
/// lock; it calls back on the connection's thread. Of the frames that wait, the latest is taken.
class VideoStream {
 public:
  struct Callbacks {
    std::function<void(const CameraFrame&)> onFrame;
    /// In the words of the server.
    std::function<void(const std::string& error)> onError;
  };

  VideoStream(media::pipewire::Connection& connection, Callbacks callbacks);
  VideoStream(const VideoStream&) = delete;
  VideoStream& operator=(const VideoStream&) = delete;
  ~VideoStream();

  bool connect(const Node& camera, const camera::CameraFormat& format);
  /// The node that it is to the server.
  [[nodiscard]] std::uint32_t nodeId() const;

 private:
  class Stream;
  std::unique_ptr<Stream> stream_;
};

}  // namespace vesk::capture::pipewire
