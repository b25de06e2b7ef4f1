#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <optional>
#include <string>

#include "capture/CameraSource.h"
#include "capture/pipewire/CallbackGate.h"
#include "capture/pipewire/CameraNode.h"
#include "capture/pipewire/LinkWatch.h"
#include "capture/pipewire/Registry.h"
#include "capture/pipewire/VideoStream.h"

namespace vesk::capture::pipewire {

/// The media class of cameras.
inline constexpr auto cameraClass = "Video/Source";

struct CameraStreamRequest {
  std::string nodeName;
  PixelSize size;
  std::string remote;  ///< as Connection has it
};

/// The pictures of one camera.
class CameraStream final : public Listening {
 public:
  [[nodiscard]] static std::expected<std::unique_ptr<Listening>, CameraRefusal> open(
      const CameraStreamRequest& request, CameraSource::OnFrame onFrame, CameraSource::OnEnd onEnd);

  ~CameraStream() override;

 private:
  CameraStream(CameraStreamRequest request, CameraSource::OnFrame onFrame,
               CameraSource::OnEnd onEnd);
  std::expected<void, CameraRefusal> start();
  // On the connection's thread:
  void onRegistryChange();
  void fail(const CameraRefusal& reason);

  CameraStreamRequest request_;
  CameraSource::OnFrame onFrame_;
  CallbackGate gate_;
  std::unique_ptr<media::pipewire::Connection> connection_;
  // What follows is touched under the connection's lock.
  std::optional<CameraRefusal> failure_;
  bool hasFrames_ = false;
  std::optional<std::uint32_t> nodeId_;
  std::unique_ptr<Registry> registry_;
  std::unique_ptr<CameraNode> node_;
  std::unique_ptr<VideoStream> stream_;
  std::unique_ptr<LinkWatch> links_;
};

}  // namespace vesk::capture::pipewire
