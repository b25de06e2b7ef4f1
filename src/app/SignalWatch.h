#pragma once

#include <csignal>
#include <functional>
#include <thread>

namespace vesk::app {

/// While it lives, the signals that ask the process to end call a function, on a thread of its own,
/// instead of ending it. Threads started meanwhile leave these signals to it too.
class SignalWatch {
 public:
  explicit SignalWatch(std::function<void()> onSignal);
  SignalWatch(const SignalWatch&) = delete;
  SignalWatch& operator=(const SignalWatch&) = delete;
  ~SignalWatch();

 private:
  sigset_t watched_;
  sigset_t before_{};  ///< the signals that were blocked already
  std::jthread thread_;
};

}  // namespace vesk::app
