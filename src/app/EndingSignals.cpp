#include "app/EndingSignals.h"

namespace vesk::app {
namespace {

bool isIgnored(int signal) {
  struct sigaction current{};
  sigaction(signal, nullptr, &current);
  return current.sa_handler == SIG_IGN;  // NOLINT: an address in the guise of a number
}

}  // namespace

sigset_t endingSignals() {
  sigset_t set{};
  sigemptyset(&set);
  sigaddset(&set, SIGINT);
  sigaddset(&set, SIGTERM);
  if (!isIgnored(SIGHUP)) sigaddset(&set, SIGHUP);
  return set;
}

}  // namespace vesk::app
