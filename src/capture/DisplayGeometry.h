#pragma once

#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <vector>

#include "capture/BackendError.h"
#include "package/CaptureScope.h"

namespace vesk::capture {

/// A display: a monitor, or the part of the screen that stands for one.
struct Display {
  std::uint32_t id = 0;
  package::Rect frame;     ///< on the screen
  double scaleFactor = 1;  ///< pixels per unit of the screen; 1 where the screen counts in pixels
  bool operator==(const Display&) const = default;
};

/// A window with its decoration, as the display server tells of it.
struct ScreenWindow {
  struct Owner {
    std::string applicationID;    ///< what an application calls itself, in every process of it
    std::string applicationName;  ///< what the user calls it
    std::int32_t processID = 0;
    bool operator==(const Owner&) const = default;
  };

  std::uint32_t id = 0;
  std::optional<std::string> title;
  std::optional<Owner> owner;
  package::Rect frame;  ///< on the screen
  bool operator==(const ScreenWindow&) const = default;
};

/// Whether a window's frame is larger than a single unit in both directions. Smaller ones belong to
/// windows that only exist for their messages.
bool isUsableFrame(const package::Rect& frame);

/// Where global points have their y of 0: the bottom edge of the primary display on the screen. It
/// is the display's height where no other reaches further up. 0 without displays.
/// @param displays the primary one first.
double primaryHeight(const std::vector<Display>& displays);

/// Where displays and windows are at the moment. May be asked from any thread.
class DisplayGeometry {
 public:
  virtual ~DisplayGeometry() = default;

  /// The primary display first; empty when there is none or the display server has gone.
  virtual std::vector<Display> displays() const = 0;

  /// The display on which the user works: the one with the keyboard.
  virtual std::optional<Display> focusedDisplay() const = 0;

  /// The windows on the screen, without desktop and panels.
  virtual std::expected<std::vector<ScreenWindow>, BackendError> windows() const = 0;

  /// The frame of a window, or nothing when it has gone or its frame is not usable.
  virtual std::optional<package::Rect> windowFrame(std::uint32_t id) const = 0;
};

}  // namespace vesk::capture
