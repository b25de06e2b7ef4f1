#pragma once

#include <cstdint>
#include <mutex>
#include <vector>

#include "capture/x11/PixelRegion.h"
#include "capture/x11/Pixels.h"

namespace vesk::capture::x11 {

/// What the screen showed where no window was, for where one is now. Black where that was never
/// seen. May be used from any thread.
class KeptBackground {
 public:
  KeptBackground(int width, int height);

  /// @param bare the parts of the screen that `picture` shows and no window covers.
  /// @param origin where on the screen the picture begins.
  void learn(const PixelRegion& bare, const Pixels& picture, const media::PixelRect& origin);

  /// Gives `target` the pixels that begin at a place of the screen.
  void paint(const Pixels& target, int x, int y);

 private:
  Pixels whole();

  media::PixelRect extent_;
  std::mutex mutex_;  ///< guards what follows
  std::vector<std::uint32_t> pixels_;
};

}  // namespace vesk::capture::x11
