#pragma once

#include <mutex>
#include <optional>

#include "capture/CameraSource.h"
#include "capture/fake/FakeStream.h"

namespace vesk::capture::fake {

/// Cameras whose every frame a test delivers. May be used from any thread.
class FakeCameraSource final : public CameraSource {
 public:
  /// What somebody asked for.
  struct Request {
    CameraDevice device;
    PixelSize size;
    bool operator==(const Request&) const = default;
  };

  std::vector<CameraDevice> devices() override;
  std::expected<std::unique_ptr<Listening>, CameraRefusal> listen(const CameraDevice& device,
                                                                  PixelSize size, OnFrame onFrame,
                                                                  OnEnd onEnd) override;

  /// Calls back on this thread, for whatever device. The frame is passed on as it stands.
  void deliver(const CameraFrame& frame) const { streams_.deliver(frame); }
  /// Delivers a frame of one colour, 0xRRGGBB, in the size that was last asked for.
  void show(media::HostTime stamp, std::uint32_t colour) const;
  /// Ends all streams, on this thread.
  void end(const BackendError& error) const { streams_.end(error); }
  /// From now on nobody can listen, or everybody again.
  void refuse(std::optional<CameraRefusal> refusal);
  /// @param devices the one to be preferred first.
  void setDevices(std::vector<CameraDevice> devices);

  /// Granted or not.
  std::optional<Request> lastRequest() const;
  long openCount() const { return streams_.openCount(); }

 private:
  FakeStream<CameraFrame, BackendError> streams_;
  mutable std::mutex mutex_;  ///< guards what follows
  std::vector<CameraDevice> devices_{{.id = "front", .name = "测试摄像头", .type = "Fake"}};
  std::optional<Request> lastRequest_;
  std::optional<CameraRefusal> refusal_;
};

}  // namespace vesk::capture::fake
