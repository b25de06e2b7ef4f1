#include "capture/fake/FakeFrontApplication.h"

#include <utility>

namespace vesk::capture::fake {

FrontApplication::Name FakeFrontApplication::name() const {
  const std::scoped_lock lock{mutex_};
  return name_;
}

std::expected<std::unique_ptr<Listening>, BackendError> FakeFrontApplication::listen(
    Callback callback) {
  {
    const std::scoped_lock lock{mutex_};
    if (failure_) return std::unexpected(*failure_);
  }
  return listeners_.add(std::move(callback));
}

void FakeFrontApplication::activate(const Name& name) {
  {
    const std::scoped_lock lock{mutex_};
    name_ = name;
  }
  listeners_.call(name);
}

void FakeFrontApplication::fail(BackendError error) {
  const std::scoped_lock lock{mutex_};
  failure_ = std::move(error);
}

}  // namespace vesk::capture::fake
