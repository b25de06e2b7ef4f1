#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <mutex>
#include <optional>
#include <set>
#include <string>
#include <vector>

#include "capture/BackendError.h"
#include "capture/HotKeys.h"
#include "capture/x11/Connection.h"
#include "capture/x11/EventThread.h"
#include "capture/x11/KeyTable.h"
#include "capture/x11/ModifierBits.h"

namespace vesk::capture::x11 {

/// Key combinations grabbed from a display server. A failure's number is that of the server's
/// error: 10 for a combination that is taken, 2 for one that the keyboard does not have; 1 is a
/// server that has gone.
class X11HotKeys final : public HotKeys {
 public:
  /// @param display as for `Connection::open`.
  static std::expected<std::unique_ptr<X11HotKeys>, BackendError> open(
      const std::string& display = {});
  X11HotKeys(const X11HotKeys&) = delete;
  X11HotKeys& operator=(const X11HotKeys&) = delete;
  /// Gives all combinations back.
  ~X11HotKeys() override;

  std::unique_ptr<Listening> listen(Callback callback) override;
  std::expected<void, int> hold(ID id, const Shortcut& shortcut) override;
  void releaseAll() override;

 private:
  struct Held {
    ID id = 0;
    XKeyCode key = 0;
    std::uint16_t modifiers = 0;
    ModifierBits bits;  ///< by which it was taken
  };

  explicit X11HotKeys(Connection connection);
  std::optional<int> take(const Held& held) const;
  void give(const Held& held) const;
  bool isHeld(XKeyCode key, std::uint16_t modifiers) const;

  // On the thread.
  void receive(const Event& event);
  std::optional<ID> heldBy(XKeyCode key, std::uint16_t state) const;

  Connection connection_;
  Listeners<ID> listeners_;
  mutable std::mutex mutex_;  ///< guards `held_`
  std::vector<Held> held_;
  std::set<XKeyCode> down_;  ///< of the thread
  std::optional<EventThread> thread_;
};

}  // namespace vesk::capture::x11
