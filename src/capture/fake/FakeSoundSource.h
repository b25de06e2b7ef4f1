#pragma once

#include <mutex>
#include <utility>

#include "capture/SoundSource.h"
#include "capture/fake/FakeStream.h"

namespace vesk::capture::fake {

/// Sound whose every block a test delivers. May be used from any thread.
class FakeSoundSource final : public SoundSource {
 public:
  explicit FakeSoundSource(int channels, std::optional<std::string> deviceName = "测试声源")
      : channels_{channels}, deviceName_{std::move(deviceName)} {}

  int channels() const override { return channels_; }
  std::optional<std::string> deviceName() override;
  std::expected<std::unique_ptr<Listening>, BackendError> listen(OnBlock onBlock,
                                                                 OnEnd onEnd) override;

  /// Calls back on this thread. What a block says is passed on as it stands.
  void deliver(const media::SoundBlock& block) const { streams_.deliver(block); }
  /// Ends all streams, on this thread.
  void end(const BackendError& error) const { streams_.end(error); }
  /// From now on nobody can listen, or everybody again.
  void fail(std::optional<BackendError> error);
  /// Plugs another device in, or none.
  void setDeviceName(std::optional<std::string> name);

  long openCount() const { return streams_.openCount(); }

 private:
  int channels_;
  FakeStream<media::SoundBlock, BackendError> streams_;
  mutable std::mutex mutex_;  ///< guards what follows
  std::optional<std::string> deviceName_;
  std::optional<BackendError> failure_;
};

}  // namespace vesk::capture::fake
