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
};

/// What a session that opened the take again lacks of the edit; empty when all is there.
std::vector<std::string> reopeningFailures(const editor::PreviewController& reopened,
                                           const EditedTake& edited, const EditedValues& values);

/// Makes a session of its own for each call.
using MakeSession = std::function<std::unique_ptr<editor::PreviewController>()>;

/// Edits a synthetic take, opens it again in another session and looks whether the edit is there;
/// then whether undo and redo bring back what they should, and whether only that infers anew which
/// is meant to. On the main thread.
CheckOutcome checkEditRoundtrip(package::Timestamp now, const MakeSession& makeSession);

}  // namespace vesk::app
