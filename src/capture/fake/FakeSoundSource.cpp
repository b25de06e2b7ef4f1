#include "capture/fake/FakeSoundSource.h"

namespace vesk::capture::fake {

std::optional<std::string> FakeSoundSource::deviceName() {
  const std::scoped_lock lock{mutex_};
  return deviceName_;
}

std::expected<std::unique_ptr<Listening>, BackendError> FakeSoundSource::listen(OnBlock onBlock,
                                                                                OnEnd onEnd) {
  {
    const std::scoped_lock lock{mutex_};
    if (failure_) return std::unexpected(*failure_);
  }
  return streams_.open(std::move(onBlock), std::move(onEnd));
}

void FakeSoundSource::fail(std::optional<BackendError> error) {
  const std::scoped_lock lock{mutex_};
  failure_ = std::move(error);
}

void FakeSoundSource::setDeviceName(std::optional<std::string> name) {
  const std::scoped_lock lock{mutex_};
  deviceName_ = std::move(name);
}

}  // namespace vesk::capture::fake
