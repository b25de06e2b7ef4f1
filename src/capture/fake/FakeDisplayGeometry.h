#pragma once

#include <mutex>

#include "capture/DisplayGeometry.h"

namespace vesk::capture::fake {

/// Displays and windows that a test puts where it wants. May be used from any thread.
class FakeDisplayGeometry final : public DisplayGeometry {
 public:
  std::vector<Display> displays() const override;
  std::optional<Display> focusedDisplay() const override;
  std::expected<std::vector<ScreenWindow>, BackendError> windows() const override;
  std::optional<package::Rect> windowFrame(std::uint32_t id) const override;

  /// @param displays the primary one first.
  void setDisplays(std::vector<Display> displays);
  /// A display that does not exist leaves none focused.
  void focusDisplay(std::uint32_t id);
  /// Opens a window, or moves and renames the one of the same number.
  void putWindow(ScreenWindow window);
  void closeWindow(std::uint32_t id);
  /// How often a window has been looked up.
  int lookupCount() const;

 private:
  mutable std::mutex mutex_;
  std::vector<Display> displays_{{.id = 1, .frame = {0, 0, 1920, 1080}, .scaleFactor = 1}};
  std::uint32_t focusedDisplay_ = 1;
  std::vector<ScreenWindow> windows_;
  mutable int lookupCount_ = 0;
};

}  // namespace vesk::capture::fake
