#include "capture/HotKeyManager.h"

#include <utility>

#include "package/Log.h"

namespace vesk::capture {
namespace {

using Action = HotKeyManager::Action;

constexpr HotKeys::ID idOf(Action action) {
  return static_cast<HotKeys::ID>(action) + 1;
}

spdlog::logger& hotKeyLog() {
  return package::log(package::LogCategory::hotkey);
}

}  // namespace

HotKeyManager::HotKeyManager(HotKeys& hotKeys, KeyNames names, PostToMain postToMain)
    : hotKeys_{hotKeys}, names_{std::move(names)}, postToMain_{std::move(postToMain)} {}

HotKeyManager::~HotKeyManager() {
  unregisterAll();
}

std::vector<Action> HotKeyManager::registerKeys(const Shortcut& zoomIn, const Shortcut& zoomOut) {
  unregisterAll();
  listen();
  std::vector<Action> failed;
  if (!hold(Action::zoomIn, zoomIn)) failed.push_back(Action::zoomIn);
  if (!hold(Action::zoomOut, zoomOut)) failed.push_back(Action::zoomOut);
  return failed;
}

void HotKeyManager::unregisterAll() {
  hotKeys_.releaseAll();
}

bool HotKeyManager::hold(Action action, const Shortcut& shortcut) {
  if (!isHotKey(shortcut)) return false;
  const auto held = hotKeys_.hold(idOf(action), shortcut);
  if (held) {
    hotKeyLog().info("registered {} as {}", rawValue(action), displayString(shortcut, names_));
  } else {
    hotKeyLog().error("register {} failed ({}) — 可能已被其它 App 占用", rawValue(action),
                      held.error());
  }
  return held.has_value();
}

void HotKeyManager::listen() {
  if (listening_) return;
  const std::weak_ptr<HotKeyManager*> self = self_;
  listening_ = hotKeys_.listen([self, postToMain = postToMain_](HotKeys::ID id) {
    if (id != idOf(Action::zoomIn) && id != idOf(Action::zoomOut)) return;
    const auto action = static_cast<Action>(id - 1);
    postToMain([self, action] {
      const auto manager = self.lock();
      if (manager && (*manager)->onTrigger) (*manager)->onTrigger(action);
    });
  });
}

std::string_view rawValue(Action action) {
  return action == Action::zoomIn ? "zoomIn" : "zoomOut";
}

}  // namespace vesk::capture
