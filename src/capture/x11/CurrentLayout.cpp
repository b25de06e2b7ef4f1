#include "capture/x11/CurrentLayout.h"

#include <xcb/xcb.h>

#include <memory>
#include <mutex>
#include <utility>

#include "capture/x11/Connection.h"
#include "capture/x11/Keyboard.h"

namespace vesk::capture::x11 {
namespace {

class LayoutReader {
 public:
  LayoutReader(std::unique_ptr<const Connection> connection, Keyboard keyboard)
      : connection_{std::move(connection)}, keyboard_{std::move(keyboard)} {}

  std::string typed(KeyCode keyCode) {
    const std::scoped_lock lock{mutex_};
    followChanges();
    return keyboard_.typedAlone(keyCode);
  }

 private:
  /// With the answer to any request come all events from before it.
  void followChanges() {
    auto* const server = connection_->get();
    owned(xcb_get_input_focus_reply(server, xcb_get_input_focus(server), nullptr));
    while (const auto event = owned(xcb_poll_for_event(server))) {
      keyboard_.follow(Event{event.get()});
    }
  }

  std::mutex mutex_;
  std::unique_ptr<const Connection> connection_;
  Keyboard keyboard_;
};

}  // namespace

std::expected<KeyNames::LayoutLookup, BackendError> currentLayout(const std::string& display) {
  auto opened = Connection::open(display);
  if (!opened) return std::unexpected(opened.error());
  auto connection = std::make_unique<const Connection>(*std::move(opened));
  auto keyboard = Keyboard::open(*connection);
  if (!keyboard) return std::unexpected(keyboard.error());
  const auto reader = std::make_shared<LayoutReader>(std::move(connection), *std::move(keyboard));
  return [reader](KeyCode keyCode) { return reader->typed(keyCode); };
}

}  // namespace vesk::capture::x11
