#pragma once

#include <QCoreApplication>
#include <array>
#include <chrono>
#include <memory>

#include "editor/PreviewController.h"
#include "editor/SoundOutput.h"
#include "package/RecordingLibrary.h"

namespace vesk::app {

/// What editor sessions without a window need: an event loop, a library, a sound output. Main
/// thread; one at a time.
class EditorStage {
 public:
  /// @param library outlives the stage.
  /// @param sound where the sessions are heard, one of them at a time.
  EditorStage(package::RecordingLibrary& library, std::unique_ptr<editor::SoundOutput> sound);

  /// A session of its own; must not outlive the stage.
  std::unique_ptr<editor::PreviewController> makeSession();

  /// Lets timers and events happen for so long.
  static void runFor(std::chrono::milliseconds time);

 private:
  /// Keeps what QCoreApplication goes on pointing to.
  struct Application {
    int argumentCount = 1;
    std::array<char, 5> name{"vesk"};
    std::array<char*, 2> arguments{name.data(), nullptr};
    QCoreApplication application{argumentCount, arguments.data()};
  };

  std::unique_ptr<Application> application_;  ///< unless the process has one
  package::RecordingLibrary& library_;
  std::unique_ptr<editor::SoundOutput> sound_;
};

}  // namespace vesk::app
