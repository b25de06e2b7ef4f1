#pragma once

#include <optional>
#include <string>

namespace vesk::package {

/// Where the log goes and from which level on.
struct LogRoute {
  enum class Target { journal, standardError };
  Target target = Target::standardError;
  bool includesInfo = false;  ///< else errors only
  bool operator==(const LogRoute&) const = default;
};

/// What a process can tell about who started it. An environment variable that is not set is absent.
struct LogSurroundings {
  bool hasTerminal = false;           ///< a standard stream is a terminal
  std::string standardErrorIdentity;  ///< "device:inode" of standard error
  std::string processID;
  std::optional<std::string> journalStream;      ///< JOURNAL_STREAM
  std::optional<std::string> launchedProcessID;  ///< GIO_LAUNCHED_DESKTOP_FILE_PID
  std::optional<std::string> startupID;          ///< DESKTOP_STARTUP_ID
  std::optional<std::string> activationToken;    ///< XDG_ACTIVATION_TOKEN
  std::optional<std::string> level;              ///< VESK_LOG
};

/// The surroundings of this process.
LogSurroundings currentLogSurroundings();

/// The journal, from information up, when standard error is a stream of the journal already, or
/// when a desktop launched this very process without a terminal. Else standard error: from
/// information up when the level asked for is "info", errors only otherwise.
/// The form of JOURNAL_STREAM: https://www.freedesktop.org/software/systemd/man/systemd.exec.html
LogRoute logRoute(const LogSurroundings& surroundings);

}  // namespace vesk::package
