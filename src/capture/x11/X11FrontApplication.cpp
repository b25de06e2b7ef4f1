#include "capture/x11/X11FrontApplication.h"

#include <xcb/xcb.h>

#include <utility>

#include "capture/x11/WindowOwner.h"

namespace vesk::capture::x11 {
std::expected<std::unique_ptr<X11FrontApplication>, BackendError> X11FrontApplication::open(
    const std::string& display) {
  auto connection = Connection::open(display);
  if (!connection) return std::unexpected(connection.error());
  return std::unique_ptr<X11FrontApplication>{new X11FrontApplication{*std::move(connection)}};
}

X11FrontApplication::X11FrontApplication(Connection connection)
    : connection_{std::move(connection)}, activeWindow_{connection_.atom("_NET_ACTIVE_WINDOW")} {
  constexpr std::uint32_t wanted = XCB_EVENT_MASK_PROPERTY_CHANGE;
  xcb_change_window_attributes(connection_.get(), connection_.root(), XCB_CW_EVENT_MASK, &wanted);
  readName();
  thread_.emplace(connection_, "vesk.front", [this](const Event& event) { receive(event); });
}

FrontApplication::Name X11FrontApplication::name() const {
  const std::scoped_lock lock{mutex_};
  return name_;
}

std::expected<std::unique_ptr<Listening>, BackendError> X11FrontApplication::listen(
    Callback callback) {
  if (!connection_.isAlive()) return std::unexpected(BackendError{"X 显示服务器已经断开"});
  return listeners_.add(std::move(callback));
}

void X11FrontApplication::receive(const Event& event) {
  if (event.type() != XCB_PROPERTY_NOTIFY) return;
  const bool concernsUs = event.as<xcb_property_notify_event_t>().atom == activeWindow_;
  if (concernsUs && readName()) listeners_.call(name());
}

bool X11FrontApplication::readName() {
  const auto window = connection_.number(connection_.root(), activeWindow_);
  if (!window || *window == XCB_WINDOW_NONE) return false;
  const auto owner = windowOwner(connection_, *window);
  const std::scoped_lock lock{mutex_};
  name_ = owner ? Name{owner->applicationName} : std::nullopt;
  return true;
}

}  // namespace vesk::capture::x11
