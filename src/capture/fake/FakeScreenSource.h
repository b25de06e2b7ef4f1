#pragma once

#include <mutex>
#include <optional>

#include "capture/ScreenSource.h"
#include "capture/fake/FakeStream.h"

namespace vesk::capture::fake {

/// A screen whose every frame a test delivers. May be used from any thread.
class FakeScreenSource final : public ScreenSource {
 public:
  std::expected<std::unique_ptr<Listening>, BackendError> stream(const ScreenRequest& request,
                                                                 OnFrame onFrame,
                                                                 OnEnd onEnd) override;

  /// Calls back on this thread. What a frame says is passed on as it stands.
  void deliver(const ScreenFrame& frame) const { streams_.deliver(frame); }
  /// Delivers a complete frame of one colour, 0xRRGGBB, in the size that was last asked for.
  void show(media::HostTime stamp, std::uint32_t colour = 0) const;
  /// Delivers an idle frame.
  void rest(media::HostTime stamp) const;
  /// Ends all streams, on this thread.
  void end(const ScreenStreamEnd& end) const { streams_.end(end); }
  /// From now on nobody can begin a stream, or everybody again.
  void fail(std::optional<BackendError> error);

  /// What was last asked for, granted or not.
  std::optional<ScreenRequest> lastRequest() const;
  long openCount() const { return streams_.openCount(); }

 private:
  FakeStream<ScreenFrame, ScreenStreamEnd> streams_;
  mutable std::mutex mutex_;  ///< guards what follows
  std::optional<ScreenRequest> lastRequest_;
  std::optional<BackendError> failure_;
};

}  // namespace vesk::capture::fake
