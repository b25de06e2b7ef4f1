#include "capture/pipewire/SystemSound.h"

#include <utility>

#include "capture/pipewire/SoundStream.h"

namespace vesk::capture::pipewire {

SystemSound::SystemSound(std::string remote) : remote_{std::move(remote)} {}

int SystemSound::channels() const {
  return 2;
}

std::optional<std::string> SystemSound::deviceName() {
  return defaultDeviceName(DefaultDevice::sink, remote_);
}

std::expected<std::unique_ptr<Listening>, BackendError> SystemSound::listen(OnBlock onBlock,
                                                                            OnEnd onEnd) {
  return SoundStream::open(
      {.device = DefaultDevice::sink, .channels = channels(), .remote = remote_},
      std::move(onBlock), std::move(onEnd));
}

}  // namespace vesk::capture::pipewire
