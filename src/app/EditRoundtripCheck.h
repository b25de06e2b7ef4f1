#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "app/SelfCheck.h"
#include "editor/PreviewController.h"
#include "package/RecordingMeta.h"

namespace vesk::app {

/// What was edited in a session that is now to be found again in another one.
struct EditedTake {
  std::size_t inferred = 0;  ///< segments before the edit
  std::size_t kept = 0;      ///< segments after the edit
  std::string editedID;
  std::string deletedID;
};

/// The values that the check gives to what it edits.
struct EditedValues {
  double level = 3.4;
  glm::vec2 focus{0.11F, 0.22F};
  double systemVolume = 0.37;
  double micVolume = 1.62;
  double cameraSize = 0.41;   ///< of the camera's window, that undo brings back
  double followSpeed = 0.55;  ///< of the take opened again
};

/// What a session that opened the take again lacks of the edit; empty when all is there.
std::vector<std::string> reopeningFailures(const editor::PreviewController& reopened,
                                           const EditedTake& edited, const EditedValues& values);

/// What is wrong after a change of the camera's window was undone: views that keep a copy of its
/// size must have been told, and it must have come back.
std::vector<std::string> viewUndoFailures(const editor::PreviewController& undone,
                                          int versionBefore, const EditedValues& values);

/// What is wrong after a change of the follow speed: it must be in the segments, and infer nothing.
/// @param before how many segments there were before the change.
std::vector<std::string> followSpeedFailures(const editor::PreviewController& changed,
                                             std::size_t before, const EditedTake& edited,
                                             const EditedValues& values);

/// What is wrong after a new inference was undone: the edit must be back.
std::vector<std::string> regenerationUndoFailures(const editor::PreviewController& undone,
                                                  const EditedTake& edited,
                                                  const EditedValues& values);

/// Makes a session of its own for each call.
using MakeSession = std::function<std::unique_ptr<editor::PreviewController>()>;

/// Edits a synthetic take, opens it again in another session and looks whether the edit is there;
/// then whether undo brings back what it should, and whether only that infers anew which is meant
/// to. On the main thread.
CheckOutcome checkEditRoundtrip(package::Timestamp now, const MakeSession& makeSession);

}  // namespace vesk::app
