#include "app/EndingSignals.h"

#include <initializer_list>

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
  for (const int signal : {SIGINT, SIGTERM, SIGHUP}) {
    if (!isIgnored(signal)) sigaddset(&set, signal);
  }
  return set;
}

}  // namespace vesk::app
