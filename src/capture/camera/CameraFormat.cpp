#include "capture/camera/CameraFormat.h"

#include <algorithm>
#include <cstdlib>
#include <tuple>

namespace vesk::capture::camera {
namespace {

constexpr int enoughFramesPerSecond = 30;
constexpr int largestSide = 8192;

bool isUsable(const CameraFormat& format) {
  const auto isSide = [](int side) { return side > 0 && side <= largestSide; };
  return isSide(format.size.width) && isSide(format.size.height);
}

/// The smaller, the better.
auto rank(const CameraFormat& format, PixelSize wanted) {
  const int distance =
      std::abs(format.size.width - wanted.width) + std::abs(format.size.height - wanted.height);
  const double rate = std::min<double>(format.framesPerSecond, enoughFramesPerSecond);
  return std::tuple{distance, -rate, format.layout};
}

int closestSide(int least, int most, int step, int wanted) {
  const int side = std::clamp(wanted, least, std::max(least, most));
  return step > 1 ? side - (side - least) % step : side;
}

}  // namespace

PixelSize closestSize(const SizeRange& range, PixelSize wanted) {
  const auto& [least, most, step] = range;
  return {closestSide(least.width, most.width, step.width, wanted.width),
          closestSide(least.height, most.height, step.height, wanted.height)};
}

int frameRateOf(const CameraFormat& format) {
  if (format.framesPerSecond <= 0) return enoughFramesPerSecond;
  return static_cast<int>(std::clamp<double>(format.framesPerSecond, 1, enoughFramesPerSecond));
}

std::optional<CameraFormat> bestFormat(std::span<const CameraFormat> formats, PixelSize wanted) {
  std::optional<CameraFormat> best;
  for (const CameraFormat& format : formats) {
    if (!isUsable(format)) continue;
    if (!best || rank(format, wanted) < rank(*best, wanted)) best = format;
  }
  return best;
}

}  // namespace vesk::capture::camera
