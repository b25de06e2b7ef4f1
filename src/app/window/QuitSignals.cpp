#include "app/window/QuitSignals.h"

#include <sys/signalfd.h>
#include <unistd.h>

#include <utility>

namespace vesk::app {
namespace {

sigset_t quitSignals() {
  sigset_t set{};
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGTERM);
  return set;
}

}  // namespace

QuitSignals::QuitSignals() {
  const sigset_t watched = quitSignals();
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
