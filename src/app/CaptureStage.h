#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <string>

#include "app/MainLoop.h"
#include "capture/CaptureBackends.h"
#include "capture/Clock.h"
#include "capture/RecordingSession.h"
#include "package/RecordingLibrary.h"

namespace vesk::app {

/// What a command without a window needs to record. To be used on the main thread.
class CaptureStage {
 public:
  /// @param library must outlive the stage.
  CaptureStage(capture::CaptureBackends backends, const package::RecordingLibrary& library,
               capture::ScreenCaptureEngine::ChooseEncoder chooseEncoder);

  MainLoop& loop() { return loop_; }
  capture::CaptureBackends& backends() { return backends_; }
  capture::RecordingSession& session() { return session_; }

 private:
  MainLoop loop_;
  capture::CaptureBackends backends_;
  capture::MonotonicClock clock_;
  capture::RecordingSession session_;
};

/// Makes a stage; the error is for the user.
using MakeCaptureStage = std::function<std::expected<std::unique_ptr<CaptureStage>, std::string>()>;

}  // namespace vesk::app
