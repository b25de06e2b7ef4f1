#include "capture/fake/FakeInputSource.h"

#include <utility>
#include <variant>

namespace vesk::capture::fake {

std::expected<std::unique_ptr<Listening>, BackendError> FakeInputSource::listen(bool includesKeys,
                                                                                Callback callback) {
  {
    const std::scoped_lock lock{mutex_};
    if (failure_) return std::unexpected(*failure_);
  }
  return listeners_.add([includesKeys, callback = std::move(callback)](const InputEvent& event) {
    if (includesKeys || !std::holds_alternative<KeyPress>(event)) callback(event);
  });
}

std::optional<ScreenPoint> FakeInputSource::pointerPosition() const {
  const std::scoped_lock lock{mutex_};
  return pointer_;
}

void FakeInputSource::setPointer(std::optional<ScreenPoint> position) {
  const std::scoped_lock lock{mutex_};
  pointer_ = position;
}

void FakeInputSource::fail(BackendError error) {
  const std::scoped_lock lock{mutex_};
  failure_ = std::move(error);
}

}  // namespace vesk::capture::fake
