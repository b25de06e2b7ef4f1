#include "capture/fake/FakeScreenSource.h"

#include <utility>

#include "capture/fake/FakePicture.h"

namespace vesk::capture::fake {

std::expected<std::unique_ptr<Listening>, BackendError> FakeScreenSource::stream(
    const ScreenRequest& request, OnFrame onFrame, OnEnd onEnd) {
  {
    const std::scoped_lock lock{mutex_};
    lastRequest_ = request;
    if (failure_) return std::unexpected(*failure_);
  }
  return streams_.open(std::move(onFrame), std::move(onEnd));
}

void FakeScreenSource::show(media::HostTime stamp, std::uint32_t colour) const {
  const auto request = lastRequest();
  if (!request) return;
  const FakePicture picture{request->size, colour};
  deliver({.status = ScreenFrame::Status::complete,
           .stamp = stamp,
           .contentRect = std::nullopt,
           .pixels = picture.view()});
}

void FakeScreenSource::rest(media::HostTime stamp) const {
  deliver({.status = ScreenFrame::Status::idle,
           .stamp = stamp,
           .contentRect = std::nullopt,
           .pixels = {}});
}

void FakeScreenSource::fail(std::optional<BackendError> error) {
  const std::scoped_lock lock{mutex_};
  failure_ = std::move(error);
}

std::optional<ScreenRequest> FakeScreenSource::lastRequest() const {
  const std::scoped_lock lock{mutex_};
  return lastRequest_;
}

}  // namespace vesk::capture::fake
