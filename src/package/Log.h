#pragma once

#include <spdlog/logger.h>

namespace vesk::package {

/// The areas of the system log, each a logger "com.ordel.vesk.<name>". `exporting` is the area
/// "export", which is a keyword.
enum class LogCategory {
  app,
  session,
  capture,
  events,
  camera,
  mic,
  hotkey,
  project,
  preview,
  render,
  exporting,
  library,
};

/// The logger of an area. Before startLogging every logger writes errors to standard error.
/// May be called, and the logger used, from any thread.
spdlog::logger& log(LogCategory category);

/// Sends the log where logRoute says for this process: to the systemd journal or to standard
/// error. Standard output is never written to. The first thing that main does.
void startLogging();

}  // namespace vesk::package
