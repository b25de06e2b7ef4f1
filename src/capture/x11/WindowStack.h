#pragma once

#include <cstdint>
#include <unordered_map>
#include <vector>

#include "capture/x11/Connection.h"
#include "capture/x11/PixelRegion.h"
#include "capture/x11/ScreenEvents.h"

namespace vesk::capture::x11 {

/// A window that lies directly on the screen and is shown.
struct StackedWindow {
  std::uint32_t id = 0;
  media::PixelRect frame;  ///< on the screen, with its border
  int border = 0;
  bool isBlended = false;  ///< its pixels have an opacity
  bool isOwn = false;      ///< this program's
  bool operator==(const StackedWindow&) const = default;
};

/// The windows on the screen in their order. Asks the server only after something has changed.
class WindowStack {
 public:
  /// @param connection must outlive the stack; from now on it gets the events of the screen.
  explicit WindowStack(const Connection& connection);

  /// Must be told of every event.
  void note(const ScreenEvent& event);
  /// Whether something may have changed since the last refresh.
  [[nodiscard]] bool isStale() const { return isStale_; }
  /// Whether something has.
  bool refresh();

  /// The lowest first.
  [[nodiscard]] const std::vector<StackedWindow>& windows() const { return windows_; }
  /// Where windows of this program are.
  [[nodiscard]] PixelRegion ownRegion() const;
  /// Where any windows are.
  [[nodiscard]] PixelRegion coveredRegion() const;

 private:
  [[nodiscard]] std::vector<StackedWindow> ask() const;
  bool isOwn(std::uint32_t toplevel);

  const Connection& connection_;
  std::int32_t ownProcess_;
  std::vector<StackedWindow> windows_;
  std::unordered_map<std::uint32_t, bool> ownership_;  ///< of those whose owner has been asked for
  bool isStale_ = true;
};

}  // namespace vesk::capture::x11
