#pragma once

#include "capture/Geometry.h"
#include "capture/Shortcut.h"

namespace vesk::capture {

/// Plays the user, where a check of this machine needs one. To be used by one thread at a time.
class InputInjector {
 public:
  virtual ~InputInjector() = default;

  /// False when the machine does not let itself be played.
  virtual bool movePointer(const ScreenPoint& position) = 0;
  /// Presses a combination and lets it go.
  virtual bool press(const Shortcut& shortcut) = 0;
};

}  // namespace vesk::capture
