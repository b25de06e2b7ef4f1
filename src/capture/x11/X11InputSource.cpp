#include "capture/x11/X11InputSource.h"

#include <utility>

#include "capture/x11/InputListening.h"
#include "capture/x11/PointerPosition.h"

namespace vesk::capture::x11 {

std::expected<std::unique_ptr<X11InputSource>, BackendError> X11InputSource::open(
    const std::string& display) {
  auto connection = Connection::open(display);
  if (!connection) return std::unexpected(connection.error());
  return std::unique_ptr<X11InputSource>{new X11InputSource{display, *std::move(connection)}};
}

X11InputSource::X11InputSource(std::string display, Connection connection)
    : display_{std::move(display)}, pointerConnection_{std::move(connection)} {}

std::expected<std::unique_ptr<Listening>, BackendError> X11InputSource::listen(bool includesKeys,
                                                                               Callback callback) {
  return InputListening::begin(display_, includesKeys, std::move(callback));
}

std::optional<ScreenPoint> X11InputSource::pointerPosition() const {
  const std::scoped_lock lock{pointerMutex_};
  return x11::pointerPosition(pointerConnection_);
}

}  // namespace vesk::capture::x11
