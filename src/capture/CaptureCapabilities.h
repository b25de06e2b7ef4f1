#pragma once

namespace vesk::capture {

/// What the backends of this desktop can give, so that the user can be told what they cannot.
/// Whether a device is plugged in is another matter, which the backends are asked when it counts.
struct CaptureCapabilities {
  bool displays = false;
  bool windows = false;          ///< one window, followed where it goes and whatever covers it
  bool regions = false;          ///< without the user's choice in a dialog of the desktop
  bool hidesOwnWindows = false;  ///< the program's windows are not in the picture
  bool input = false;            ///< clicks, scrolling and the pointer's way
  bool keyboard = false;
  bool hotKeys = false;
  bool secureInput = false;  ///< a password that is typed is noticed
  bool systemSound = false;
  bool microphone = false;
  bool camera = false;
  bool operator==(const CaptureCapabilities&) const = default;
};

}  // namespace vesk::capture
