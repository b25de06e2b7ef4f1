#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <string_view>
#include <vector>

#include "capture/HotKeys.h"
#include "capture/KeyNames.h"
#include "capture/PostToMain.h"
#include "capture/Shortcut.h"

namespace vesk::capture {

/// Holds the two key combinations of the manual camera marks while a take runs. To be used on the
/// main thread.
class HotKeyManager {
 public:
  enum class Action : std::uint8_t { zoomIn, zoomOut };

  /// @param hotKeys must outlive the manager.
  HotKeyManager(HotKeys& hotKeys, KeyNames names, PostToMain postToMain);
  HotKeyManager(const HotKeyManager&) = delete;
  HotKeyManager& operator=(const HotKeyManager&) = delete;
  ~HotKeyManager();

  /// Called on the main thread at each press.
  std::function<void(Action)> onTrigger;

  /// Holds the two in place of those before. The result are the actions whose combination could not
  /// be had: it is no hot key, or it is taken, be it by the action before.
  std::vector<Action> registerKeys(const Shortcut& zoomIn, const Shortcut& zoomOut);

  void unregisterAll();

 private:
  bool hold(Action action, const Shortcut& shortcut);
  void listen();

  HotKeys& hotKeys_;
  KeyNames names_;
  PostToMain postToMain_;
  /// What the main thread still has to hear finds the manager by this, or finds it gone.
  std::shared_ptr<HotKeyManager*> self_ = std::make_shared<HotKeyManager*>(this);
  std::unique_ptr<Listening> listening_;  ///< from the first registration on
};

/// "zoomIn" or "zoomOut".
std::string_view rawValue(HotKeyManager::Action action);

}  // namespace vesk::capture
