#pragma once

#include <csignal>

namespace vesk::app {

/// The signals that ask the process to end: Ctrl-C, a request to terminate, and the end of its
/// terminal, unless that was to be ignored from the start, as by nohup. A shell's script has what
/// it starts in the background ignore Ctrl-C, and stops it with just that.
sigset_t endingSignals();

}  // namespace vesk::app
