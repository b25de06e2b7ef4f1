#pragma once

#include <mutex>
#include <vector>

#include "capture/HotKeys.h"

namespace vesk::capture::fake {

/// A keyboard on which a test presses combinations and other applications hold some. May be used
/// from any thread.
class FakeHotKeys final : public HotKeys {
 public:
  // The numbers with which a combination fails.
  static constexpr int taken = 10;
  static constexpr int noSuchKey = 2;
  /// No key of the keyboard has a higher code.
  static constexpr KeyCode lastKey = 127;

  std::unique_ptr<Listening> listen(Callback callback) override;
  std::expected<void, int> hold(ID id, const Shortcut& shortcut) override;
  void releaseAll() override;

  /// Calls back on this thread when the combination is held.
  void press(const Shortcut& shortcut);
  /// Calls back on this thread with whatever number.
  void trigger(ID id) { listeners_.call(id); }
  /// Lets another application hold a combination.
  void occupy(const Shortcut& shortcut);
  /// How many combinations are held.
  std::size_t heldCount() const;
  /// How often somebody has begun to listen.
  int listenCount() const;

 private:
  struct Held {
    ID id;
    Shortcut shortcut;
  };

  Listeners<ID> listeners_;
  mutable std::mutex mutex_;  ///< guards what follows
  std::vector<Held> held_;
  std::vector<Shortcut> occupied_;
  int listenCount_ = 0;
};

}  // namespace vesk::capture::fake
