#pragma once

#include <QSocketNotifier>
#include <csignal>
#include <functional>
#include <memory>

namespace vesk::app {

/// While it lives, the signals that ask the process to end do not end it. Made before anything that
/// starts threads, for these leave the signals to it as well.
class QuitSignals {
 public:
  QuitSignals();
  QuitSignals(const QuitSignals&) = delete;
  QuitSignals& operator=(const QuitSignals&) = delete;
  ~QuitSignals();

  /// From now on such a signal, an earlier one included, calls a function in the event loop of this
  /// thread, for as long as the result lives.
  std::unique_ptr<QSocketNotifier> watch(std::function<void()> onSignal) const;

 private:
  sigset_t before_{};  ///< the signals that were blocked already
  int descriptor_;
};

}  // namespace vesk::app
