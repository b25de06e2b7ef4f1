#include "compositor/CameraClock.h"

#include <algorithm>

namespace vesk::compositor {

double cameraOffset(const package::RecordingMeta& meta) {
  if (!meta.cameraFirstFramePTS || !meta.firstFramePTS) return 0;
  return *meta.cameraFirstFramePTS - *meta.firstFramePTS;
}

double cameraTime(double time, double offset) {
  return std::max(time - offset, 0.0);
}

double cameraVisibleFrom(const package::RecordingMeta& meta) {
  const auto& shown = meta.cameraFirstLitPTS ? meta.cameraFirstLitPTS : meta.cameraFirstFramePTS;
  if (!meta.firstFramePTS || !shown) return 0;
  return std::max(*shown - *meta.firstFramePTS, 0.0);
}

}  // namespace vesk::compositor
