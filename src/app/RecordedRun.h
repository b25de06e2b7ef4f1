#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <string>

#include "app/CaptureStage.h"
#include "capture/RecordingSession.h"

namespace vesk::app {

/// Why a command's take came to nothing.
struct RunFailure {
  bool timedOut = false;
  std::string message;  ///< for the user; empty for one that timed out
  bool operator==(const RunFailure&) const = default;
};

/// A take as a command makes it.
struct RunPlan {
  capture::RecordingSession::Order order;
  double seconds = 6;  ///< between the start of the recording and its stop
  double limit = 30;   ///< seconds for everything, the start of the encoder included
  /// Runs while the take is recorded, in place of waiting for so long.
  std::function<void(CaptureStage& stage)> perform;
};

/// Records through the stage's session and gives the package.
std::expected<std::filesystem::path, RunFailure> recordRun(CaptureStage& stage,
                                                           const RunPlan& plan);

}  // namespace vesk::app
