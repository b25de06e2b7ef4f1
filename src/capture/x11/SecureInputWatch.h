#pragma once

#include <atomic>
#include <thread>

#include "capture/x11/Bell.h"

namespace vesk::capture::x11 {

/// Whether the user is in a password field, as far as applications tell on the accessibility bus of
/// the session. Where there is none it is always off, which the log tells once. A field that had
/// the keyboard before the watch began is known when it gets it again.
class SecureInputWatch {
 public:
  /// Does not wait for the bus.
  SecureInputWatch();
  SecureInputWatch(const SecureInputWatch&) = delete;
  SecureInputWatch& operator=(const SecureInputWatch&) = delete;
  ~SecureInputWatch();

  /// Any thread; does not wait.
  bool isOn() const { return isOn_; }

 private:
  void run(const std::stop_token& stop);

  std::atomic<bool> isOn_ = false;
  Bell bell_;
  std::jthread thread_;
};

}  // namespace vesk::capture::x11
