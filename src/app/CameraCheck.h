#pragma once

#include <functional>
#include <optional>

#include "app/SelfCheck.h"

namespace vesk::app {

/// Where the picture lies on a canvas, in canvas pixels.
struct PictureRect {
  double x = 0;
  double y = 0;
  double width = 0;
  double height = 0;
};

/// The compositor's rectangle for a recording of 16 to 9 on a canvas of these pixels, with or
/// without the default frame around it; nothing when the compositor cannot tell.
using PictureLayout = std::function<std::optional<PictureRect>(int width, int height, bool framed)>;

/// The self-check `--test-camera`: the invariants of the perspective camera on grids of poses.
/// @param layout may be empty; then the line that needs it fails.
CheckOutcome checkCamera(const PictureLayout& layout);

}  // namespace vesk::app
