#pragma once

#include <chrono>
#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "app/MainLoop.h"
#include "app/SignalWatch.h"
#include "capture/CaptureBackends.h"
#include "capture/Clock.h"
#include "capture/RecordingSession.h"
#include "package/RecordingLibrary.h"

namespace vesk::app {

/// What a command without a window needs to record. While it lives, Ctrl-C and a request to
/// terminate end a take by the ordinary path, and the command with it. To be used on the main
/// thread.
class CaptureStage {
 public:
  using OpenBackends = std::function<std::expected<capture::CaptureBackends, std::string>()>;

  /// Opens the backends. The error is for the user.
  /// @param library must outlive the stage.
  static std::expected<std::unique_ptr<CaptureStage>, std::string> open(
      const OpenBackends& openBackends, const package::RecordingLibrary& library,
      capture::ScreenCaptureEngine::ChooseEncoder chooseEncoder);

  MainLoop& loop() { return loop_; }
  capture::CaptureBackends& backends() { return backends_; }
  capture::RecordingSession& session() { return *session_; }

  /// Lets time go by, unless somebody wants the process to end.
  void runFor(std::chrono::duration<double> time);

 private:
  CaptureStage();
  void end();

  MainLoop loop_;
  bool isEnding_ = false;
  /// Before anything that starts threads, for these leave the signals to it as well.
  SignalWatch signals_;
  capture::CaptureBackends backends_;
  capture::MonotonicClock clock_;
  std::optional<capture::RecordingSession> session_;
};

/// Makes a stage; the error is for the user.
using MakeCaptureStage = std::function<std::expected<std::unique_ptr<CaptureStage>, std::string>()>;

}  // namespace vesk::app
