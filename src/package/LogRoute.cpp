#include "package/LogRoute.h"

#include <fmt/format.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cstdlib>

namespace vesk::package {
namespace {

std::optional<std::string> environment(const char* name) {
  const char* value = std::getenv(name);
  return value == nullptr ? std::nullopt : std::optional<std::string>{value};
}

std::string streamIdentity(int descriptor) {
  struct stat status{};
  if (::fstat(descriptor, &status) != 0) return {};
  return fmt::format("{}:{}", status.st_dev, status.st_ino);
}

/// The launch marks are inherited by everything that a launched program starts in turn, so a mark
/// counts only where the process is the one it was made for, or has no terminal to be used from.
bool launchedByDesktop(const LogSurroundings& surroundings) {
  if (surroundings.hasTerminal) return false;
  if (surroundings.launchedProcessID) {
    return surroundings.launchedProcessID == surroundings.processID;
  }
  return surroundings.startupID.has_value() || surroundings.activationToken.has_value();
}

}  // namespace

LogSurroundings currentLogSurroundings() {
  return {
      .hasTerminal = ::isatty(STDIN_FILENO) != 0 || ::isatty(STDOUT_FILENO) != 0 ||
                     ::isatty(STDERR_FILENO) != 0,
      .standardErrorIdentity = streamIdentity(STDERR_FILENO),
      .processID = fmt::to_string(::getpid()),
      .journalStream = environment("JOURNAL_STREAM"),
      .launchedProcessID = environment("GIO_LAUNCHED_DESKTOP_FILE_PID"),
      .startupID = environment("DESKTOP_STARTUP_ID"),
      .activationToken = environment("XDG_ACTIVATION_TOKEN"),
      .level = environment("VESK_LOG"),
  };
}

LogRoute logRoute(const LogSurroundings& surroundings) {
  const bool standardErrorIsJournal =
      !surroundings.standardErrorIdentity.empty() &&
      surroundings.journalStream == surroundings.standardErrorIdentity;
  if (standardErrorIsJournal || launchedByDesktop(surroundings)) {
    return {.target = LogRoute::Target::journal, .includesInfo = true};
  }
  return {.target = LogRoute::Target::standardError, .includesInfo = surroundings.level == "info"};
}

}  // namespace vesk::package
