#include <fmt/format.h>

#include <chrono>
#include <csignal>
#include <cstddef>
#include <cstdio>
#include <expected>
#include <memory>
#include <optional>
#include <span>
#include <string>

#include "app/CaptureStage.h"
#include "app/CommandContext.h"
#include "app/DesktopBackends.h"
#include "app/RendererLayout.h"
#include "app/SharedLibrary.h"
#include "app/VeskCLI.h"
#ifdef VESK_WINDOW
#include "app/window/WindowedStart.h"
#endif
#include "editor/pipewire/SoundOutputs.h"
#include "media/EncoderSelection.h"
#include "package/LibraryRoot.h"
#include "package/Log.h"
#include "package/UserDefaults.h"

namespace {

using namespace vesk;

std::filesystem::path libraryRoot() {
  return package::currentRootFromDefaults(
      package::UserDefaults(package::UserDefaults::defaultFile()));
}

std::filesystem::path encoderMemory() {
  return package::UserDefaults::defaultFile().parent_path() / "encoders.json";
}

std::expected<std::unique_ptr<app::CaptureStage>, std::string> makeCaptureStage() {
  return app::CaptureStage::open(app::openDesktopBackends, app::sharedLibrary(),
                                 [](const media::PictureTrackSettings& settings) {
                                   return media::encoderOfThisMachine(settings, encoderMemory());
                                 });
}

#ifdef VESK_WINDOW
int runWithoutCommand(int& argc, char** argv, const app::CommandContext& context) {
  return app::runWindow(argc, argv,
                        {.commandLine = context.commandLine,
                         .library = context.library,
                         .openSound = context.openSound});
}
#else
int runWithoutCommand(int& /*argc*/, char** /*argv*/, const app::CommandContext& /*context*/) {
  std::string flags;
  for (const app::Command& command : app::commands()) {
    flags += fmt::format(" {}", command.flag);
  }
  fmt::print(stderr, "这个版本只响应命令行，可用的命令有{}\n", flags);
  return 1;
}
#endif

/// A reader of our output, a sound or display server that goes away, and a file that may not grow
/// any more, are errors of what we do with them and must not end the process.
void keepRunning() {
  for (const int signal : {SIGPIPE, SIGXFSZ}) {
    std::signal(signal, SIG_IGN);  // NOLINT: fails only for a signal that does not exist
  }
}

/// Output that could not be written, to a full disk for one, must not pass for a finished command.
bool closeOutput() {
  const bool written = std::ferror(stdout) == 0 && std::fflush(stdout) == 0;
  if (!written) {
    fmt::print(stderr, "无法写出结果：标准输出不可写或磁盘已满\n");
  }
  return written;
}

}  // namespace

int main(int argc, char** argv) {
  package::startLogging();
  keepRunning();
  const auto now = std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
  const app::CommandContext context{
      .commandLine = app::CommandLine({argv, static_cast<std::size_t>(argc)}),
      .out = stdout,
      .now = now,
      .libraryRoot = libraryRoot,
      .pictureLayout = app::rendererLayout(now),
      .makeCaptureStage = makeCaptureStage,
      .library = app::sharedLibrary,
      .openSound = [] { return editor::pipewire::openSoundOutput(); },
      .openCameras = app::openCameras,
  };
  const std::optional<int> exitCode = app::dispatch(context);
  if (!exitCode) return runWithoutCommand(argc, argv, context);
  return closeOutput() ? *exitCode : 1;
}
