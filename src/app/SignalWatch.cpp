#include "app/SignalWatch.h"

#include <ctime>
#include <utility>

#include "app/EndingSignals.h"

namespace vesk::app {

SignalWatch::SignalWatch(std::function<void()> onSignal) : watched_(endingSignals()) {
  pthread_sigmask(SIG_BLOCK, &watched_, &before_);
  thread_ = std::jthread([this, onSignal = std::move(onSignal)](const std::stop_token& stop) {
    constexpr timespec pollTime{.tv_sec = 0, .tv_nsec = 50'000'000};
    while (!stop.stop_requested()) {
      if (sigtimedwait(&watched_, nullptr, &pollTime) > 0) onSignal();
    }
  });
}

SignalWatch::~SignalWatch() {
  thread_.request_stop();
  thread_.join();
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

}  // namespace vesk::app
