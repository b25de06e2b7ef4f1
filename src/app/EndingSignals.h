#pragma once

#include <csignal>

namespace vesk::app {

/// The signals that ask the process to end: Ctrl-C, a request to terminate, and the end of its
/// terminal. Those are left out that it was started to ignore, as by nohup.
sigset_t endingSignals();

}  // namespace vesk::app
