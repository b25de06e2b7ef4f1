#pragma once

#include <functional>
#include <mutex>
#include <utility>

#include "capture/BackendError.h"

namespace vesk::capture::pipewire {

/// Lets a stream's callbacks through, one at a time, from its start until its end, and tells of the
/// end once. May be used from any thread.
class CallbackGate {
 public:
  explicit CallbackGate(std::function<void(const BackendError&)> onEnd)
      : onEnd_{std::move(onEnd)} {}

  /// False when the stream has ended already, of which nobody is told then.
  [[nodiscard]] bool open() {
    const std::scoped_lock lock{mutex_};
    isOpen_ = !hasEnded_;
    return isOpen_;
  }

  /// Lets nothing through from now on; waits for a callback that runs.
  void close() {
    const std::scoped_lock lock{mutex_};
    isOpen_ = false;
  }

  template <typename Callback>
  void pass(Callback callback) {
    const std::scoped_lock lock{mutex_};
    if (isOpen_) callback();
  }

  void end(const BackendError& reason) {
    const std::scoped_lock lock{mutex_};
    hasEnded_ = true;
    if (std::exchange(isOpen_, false)) onEnd_(reason);
  }

 private:
  std::function<void(const BackendError&)> onEnd_;
  std::mutex mutex_;  ///< held during callbacks; guards what follows
  bool isOpen_ = false;
  bool hasEnded_ = false;
};

}  // namespace vesk::capture::pipewire
