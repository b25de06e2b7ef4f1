#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <vector>

#include "capture/DisplayGeometry.h"

namespace vesk::capture {

/// A window that the user may choose to record.
struct WindowChoice {
  std::uint32_t id = 0;
  std::string title;
  std::string appName;
  package::Rect frame;  ///< on the screen
  std::int32_t pid = 0;
  bool operator==(const WindowChoice&) const = default;
};

/// The windows that are worth recording: large enough, of an application, and not of this one;
/// ordered by application and then by title. A window without a title bears its application's name.
/// @param ownApplicationID what this application calls itself; empty leaves no window out.
std::vector<WindowChoice> windowChoices(const std::vector<ScreenWindow>& windows,
                                        std::string_view ownApplicationID);

}  // namespace vesk::capture
