#include "capture/DisplayGeometry.h"

namespace vesk::capture {

bool isUsableFrame(const package::Rect& frame) {
  return frame.width > 1 && frame.height > 1;
}

double primaryHeight(const std::vector<Display>& displays) {
  if (displays.empty()) return 0;
  const auto& primary = displays.front().frame;
  return primary.y + primary.height;
}

}  // namespace vesk::capture
