#include "capture/x11/X11HotKeys.h"

#include <xcb/xcb.h>

#include <algorithm>
#include <utility>

#include "capture/x11/Keyboard.h"
#include "capture/x11/ModifierBits.h"

namespace vesk::capture::x11 {
namespace {

constexpr int taken = XCB_ACCESS;
constexpr int noSuchKey = XCB_VALUE;
constexpr int serverHasGone = XCB_CONN_ERROR;

/// Whether the keyboard has all modifiers of a combination.
bool hasModifiers(const ModifierBits& bits, ModifierFlags flags) {
  return ((flags & optionModifier) == 0 || bits.option != 0) &&
         ((flags & commandModifier) == 0 || bits.command != 0);
}

}  // namespace

std::expected<std::unique_ptr<X11HotKeys>, BackendError> X11HotKeys::open(
    const std::string& display) {
  auto connection = Connection::open(display);
  if (!connection) return std::unexpected(connection.error());
  return std::unique_ptr<X11HotKeys>{new X11HotKeys{*std::move(connection)}};
}

X11HotKeys::X11HotKeys(Connection connection) : connection_{std::move(connection)} {
  Keyboard::leaveOutFalseReleases(connection_);
  thread_.emplace(connection_, "vesk.hotkeys", [this](const Event& event) { receive(event); });
}

X11HotKeys::~X11HotKeys() {
  releaseAll();
}

std::unique_ptr<Listening> X11HotKeys::listen(Callback callback) {
  return listeners_.add(std::move(callback));
}

std::expected<void, int> X11HotKeys::hold(ID id, const Shortcut& shortcut) {
  const auto bits = readModifierBits(connection_);
  const auto key = xKeyCodeOf(shortcut.keyCode);
  if (!connection_.isAlive()) return std::unexpected(serverHasGone);
  if (!key || !hasModifiers(bits, shortcut.modifierFlags)) return std::unexpected(noSuchKey);
  const Held held{
      .id = id, .key = *key, .modifiers = bits.bitsOf(shortcut.modifierFlags), .bits = bits};
  // The server would let one client have a combination twice.
  if (isHeld(held.key, held.modifiers)) return std::unexpected(taken);
  if (const auto failure = take(held)) {
    give(held);
    return std::unexpected(*failure);
  }
  const std::scoped_lock lock{mutex_};
  held_.push_back(held);
  return {};
}

void X11HotKeys::releaseAll() {
  std::vector<Held> released;
  {
    const std::scoped_lock lock{mutex_};
    released.swap(held_);
  }
  for (const auto& held : released) give(held);
}

std::optional<int> X11HotKeys::take(const Held& held) const {
  std::vector<xcb_void_cookie_t> cookies;
  for (const auto lock : held.bits.lockCombinations()) {
    cookies.push_back(xcb_grab_key_checked(connection_.get(), 0, connection_.root(),
                                           static_cast<std::uint16_t>(held.modifiers | lock),
                                           held.key, XCB_GRAB_MODE_ASYNC, XCB_GRAB_MODE_ASYNC));
  }
  std::optional<int> failure;
  for (const auto cookie : cookies) {
    const auto error = owned(xcb_request_check(connection_.get(), cookie));
    if (error && !failure) failure = error->error_code;
  }
  thread_->wake();
  if (!connection_.isAlive()) return serverHasGone;
  return failure;
}

void X11HotKeys::give(const Held& held) const {
  for (const auto lock : held.bits.lockCombinations()) {
    xcb_ungrab_key(connection_.get(), held.key, connection_.root(),
                   static_cast<std::uint16_t>(held.modifiers | lock));
  }
  // Others may have the keys once the server has answered.
  owned(xcb_get_input_focus_reply(connection_.get(), xcb_get_input_focus(connection_.get()),
                                  nullptr));
  thread_->wake();
}

bool X11HotKeys::isHeld(XKeyCode key, std::uint16_t modifiers) const {
  const std::scoped_lock lock{mutex_};
  return std::ranges::any_of(
      held_, [&](const Held& held) { return held.key == key && held.modifiers == modifiers; });
}

void X11HotKeys::receive(const Event& event) {
  if (event.type() != XCB_KEY_PRESS && event.type() != XCB_KEY_RELEASE) return;
  // A release has the same layout.
  const auto& change = event.as<xcb_key_press_event_t>();
  if (event.type() == XCB_KEY_RELEASE) {
    down_.erase(change.detail);
    return;
  }
  const bool isRepeat = !down_.insert(change.detail).second;
  if (isRepeat) return;
  if (const auto id = heldBy(change.detail, change.state)) listeners_.call(*id);
}

std::optional<HotKeys::ID> X11HotKeys::heldBy(XKeyCode key, std::uint16_t state) const {
  const std::scoped_lock lock{mutex_};
  const auto found = std::ranges::find_if(held_, [&](const Held& held) {
    return held.key == key && (state & held.bits.shortcutBits()) == held.modifiers;
  });
  if (found == held_.end()) return std::nullopt;
  return found->id;
}

}  // namespace vesk::capture::x11
