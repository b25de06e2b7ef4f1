#include "app/VeskCLI.h"

#include <fmt/format.h>

#include <array>

#include "app/CameraCheck.h"
#include "app/CameraListCommand.h"
#include "app/CameraSyncCommand.h"
#include "app/DecodeResilienceCheck.h"
#include "app/DumpEffects.h"
#include "app/EditRoundtripCheck.h"
#include "app/EditorStage.h"
#include "app/ExportCloneCheck.h"
#include "app/ExportCommand.h"
#include "app/HotKeysCommand.h"
#include "app/PairingCheck.h"
#include "app/PersistCheck.h"
#include "app/SmokeRecordCommand.h"
#include "app/StaticTailCommand.h"
#include "app/WindowFramesCommand.h"
#include "app/WindowResizeCommand.h"
#include "editor/SilentSoundOutput.h"
#include "media/HostTime.h"

namespace vesk::app {
namespace {

int printOutcome(const CommandContext& context, const CheckOutcome& outcome) {
  fmt::print(context.out, "{}", outcome.text);
  return outcome.exitCode;
}

int testPairing(const CommandContext& context) {
  return printOutcome(context, checkPairing(context.now));
}

int testEditRoundtrip(const CommandContext& context) {
  EditorStage stage(context.library(),
                    std::make_unique<editor::SilentSoundOutput>(media::monotonicTime));
  return printOutcome(context,
                      checkEditRoundtrip(context.now, [&] { return stage.makeSession(); }));
}

int testDecodeResilience(const CommandContext& context) {
  return printOutcome(context, checkDecodeResilience(context.now));
}

int testCamera(const CommandContext& context) {
  return printOutcome(context, checkCamera(context.pictureLayout));
}

int testExportClone(const CommandContext& context) {
  return printOutcome(context, checkExportClone(context.now));
}

int testPersistence(const CommandContext& context) {
  return printOutcome(context, checkPersistence(context.now));
}

constexpr std::array allCommands{
    Command{.flag = "--test-pairing", .needsValue = false, .run = testPairing},
    Command{.flag = "--test-edit-roundtrip", .needsValue = false, .run = testEditRoundtrip},
    Command{.flag = "--test-decode-resilience", .needsValue = false, .run = testDecodeResilience},
    Command{.flag = "--test-camera", .needsValue = false, .run = testCamera},
    Command{.flag = "--test-window-frames", .needsValue = false, .run = testWindowFrames},
    Command{.flag = "--test-export-clone", .needsValue = false, .run = testExportClone},
    Command{.flag = "--diag-camera-sync", .needsValue = false, .run = diagnoseCameraSync},
    Command{.flag = "--test-persist", .needsValue = false, .run = testPersistence},
    Command{.flag = "--camera-check", .needsValue = false, .run = listCameras},
    Command{.flag = "--smoke-record", .needsValue = true, .run = smokeRecord},
    Command{.flag = "--diag-static-tail", .needsValue = true, .run = diagnoseStaticTail},
    Command{.flag = "--diag-hotkeys", .needsValue = false, .run = diagnoseHotKeys},
    Command{.flag = "--diag-window-resize", .needsValue = true, .run = diagnoseWindowResize},
    Command{.flag = "--export", .needsValue = true, .run = exportMovie},
    Command{.flag = "--dump-effects", .needsValue = false, .run = dumpEffects},
};

bool isPresent(const Command& command, const CommandLine& commandLine) {
  return command.needsValue ? commandLine.value(command.flag).has_value()
                            : commandLine.has(command.flag);
}

}  // namespace

std::span<const Command> commands() {
  return allCommands;
}

std::optional<int> dispatch(const CommandContext& context) {
  for (const Command& command : allCommands) {
    if (isPresent(command, context.commandLine)) {
      return command.run(context);
    }
  }
  return std::nullopt;
}

}  // namespace vesk::app
