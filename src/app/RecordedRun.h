#pragma once

#include <expected>
#include <filesystem>
#include <functional>
#include <string>
#include <string_view>

#include "app/CaptureStage.h"
#include "app/CommandContext.h"
#include "capture/RecordingSession.h"

namespace vesk::app {

/// Why a command's take came to nothing.
struct RunFailure {
  bool timedOut = false;
  std::string message;  ///< for the user; empty for one that timed out
  bool operator==(const RunFailure&) const = default;
};

inline constexpr double defaultRunSeconds = 6;
/// Seconds that a command waits for a take beyond its length.
inline constexpr double runGrace = 30;

/// A take as a command makes it.
struct RunPlan {
  capture::RecordingSession::Order order;
  double seconds = defaultRunSeconds;  ///< between the start of the recording and its stop
  double limit = runGrace;  ///< seconds for everything, the start of the encoder included
  /// Runs while the take is recorded, in place of waiting for so long.
  std::function<void(CaptureStage& stage)> perform;
};

/// Records through the stage's session and gives the package.
std::expected<std::filesystem::path, RunFailure> recordRun(CaptureStage& stage,
                                                           const RunPlan& plan);

/// Tells why a command's take came to nothing, and gives the command's exit code.
int failRun(const CommandContext& context, std::string_view reason);

}  // namespace vesk::app
