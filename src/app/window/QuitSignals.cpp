#include "app/window/QuitSignals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <utility>

#include "app/EndingSignals.h"

namespace vesk::app {

QuitSignals::QuitSignals() {
  const sigset_t watched = endingSignals();
  pthread_sigmask(SIG_BLOCK, &watched, &before_);
  descriptor_ = signalfd(-1, &watched, SFD_NONBLOCK | SFD_CLOEXEC);
}

QuitSignals::~QuitSignals() {
  ::close(descriptor_);
  pthread_sigmask(SIG_SETMASK, &before_, nullptr);
}

std::unique_ptr<QSocketNotifier> QuitSignals::watch(std::function<void()> onSignal) const {
  auto notifier = std::make_unique<QSocketNotifier>(descriptor_, QSocketNotifier::Read);
  QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                   [descriptor = descriptor_, onSignal = std::move(onSignal)] {
                     signalfd_siginfo signal{};
                     if (::read(descriptor, &signal, sizeof signal) > 0) onSignal();
                   });
  return notifier;
}

}  // namespace vesk::app
