#include "capture/pipewire/Microphone.h"

#include <utility>

#include "capture/pipewire/SoundStream.h"

namespace vesk::capture::pipewire {

Microphone::Microphone(std::string remote) : remote_{std::move(remote)} {}

int Microphone::channels() const {
  return 1;
}

std::optional<std::string> Microphone::deviceName() {
  return defaultDeviceName(DefaultDevice::source, remote_);
}

std::expected<std::unique_ptr<Listening>, BackendError> Microphone::listen(OnBlock onBlock,
                                                                           OnEnd onEnd) {
  return SoundStream::open(
      {.device = DefaultDevice::source, .channels = channels(), .remote = remote_},
      std::move(onBlock), std::move(onEnd));
}

}  // namespace vesk::capture::pipewire
