#pragma once

#include <cstdint>
#include <expected>
#include <functional>
#include <memory>

#include "capture/Listening.h"
#include "capture/Shortcut.h"

namespace vesk::capture {

/// Key combinations that are taken away from all applications. To be used by one thread at a time.
class HotKeys {
 public:
  using ID = std::uint32_t;
  using Callback = std::function<void(ID)>;

  virtual ~HotKeys() = default;

  /// Calls back on a thread of its own at each press of a combination that is held, whatever
  /// NumLock, CapsLock and ScrollLock are.
  virtual std::unique_ptr<Listening> listen(Callback callback) = 0;

  /// Takes a combination. The failure is the platform's number for it: somebody holds it already,
  /// this object included, or the keyboard has no such key.
  virtual std::expected<void, int> hold(ID id, const Shortcut& shortcut) = 0;

  /// Gives all combinations back.
  virtual void releaseAll() = 0;
};

}  // namespace vesk::capture
