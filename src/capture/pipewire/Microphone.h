#pragma once

#include <string>

#include "capture/SoundSource.h"

namespace vesk::capture::pipewire {

/// The default microphone, in one channel. It follows a change of that device. Every call stands
/// for itself, so that a server that was started anew is found again.
class Microphone final : public SoundSource {
 public:
  /// @param remote the path of the server's socket, or its name; empty for that of the environment.
  explicit Microphone(std::string remote = {});

  int channels() const override;
  std::optional<std::string> deviceName() override;
  std::expected<std::unique_ptr<Listening>, BackendError> listen(OnBlock onBlock,
                                                                 OnEnd onEnd) override;

 private:
  std::string remote_;
};

}  // namespace vesk::capture::pipewire
