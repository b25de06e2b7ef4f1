#include "compositor/PictureChange.h"

#include <algorithm>
#include <cstring>

namespace vesk::compositor {
namespace {

using gpu::PixelRect;

bool isOfSameKind(const media::VideoFrame& a, const media::VideoFrame& b) {
  return a.width == b.width && a.height == b.height && a.layout == b.layout &&
         a.matrix == b.matrix && a.range == b.range && a.siting == b.siting;
}

// Compares bytes in blocks: a difference is rare and mostly small, so that nearly all the time goes
// into runs that are equal, which the library compares at the speed of memory.
constexpr int block = 64;

// The changed samples of one plane.
PixelRect changedSamples(const media::VideoPlane& before, const media::VideoPlane& now,
                         int bytesPerSample) {
  const int rowBytes = now.width * bytesPerSample;
  const auto rowsDiffer = [&](int row, int first, int last) {
    return std::memcmp(before.data + row * before.stride + first,
                       now.data + row * now.stride + first,
                       static_cast<std::size_t>(last - first)) != 0;
  };
  int top = 0;
  while (top < now.height && !rowsDiffer(top, 0, rowBytes)) ++top;
  if (top == now.height) return {};
  int bottom = now.height;
  while (!rowsDiffer(bottom - 1, 0, rowBytes)) --bottom;

  int left = rowBytes;
  int right = 0;
  for (int row = top; row < bottom; ++row) {
    int first = 0;
    while (first < left && !rowsDiffer(row, first, std::min(first + block, left))) first += block;
    left = std::min(left, first);
    int last = rowBytes;
    while (last > right && !rowsDiffer(row, std::max(last - block, right), last)) last -= block;
    right = std::max(right, last);
  }
  const int firstSample = left / bytesPerSample;
  const int lastSample = (right + bytesPerSample - 1) / bytesPerSample;
  return {firstSample, top, lastSample - firstSample, bottom - top};
}

PixelRect scaled(const PixelRect& rect, int x, int y) {
  return {rect.x * x, rect.y * y, rect.width * x, rect.height * y};
}

}  // namespace

PixelRect changedPixels(const media::VideoFrame& before, const media::VideoFrame& now) {
  const PixelRect whole{0, 0, now.width, now.height};
  if (before.isSamePictureAs(now)) return {};
  if (!isOfSameKind(before, now)) return whole;
  const int sampleBytes = media::bytesPerSample(now.layout);
  const int stepX = now.planes[0].width > now.planes[1].width ? 2 : 1;
  const int stepY = now.planes[0].height > now.planes[1].height ? 2 : 1;
  PixelRect changed;
  for (std::size_t plane = 0; plane < now.planes.size(); ++plane) {
    const PixelRect part =
        changedSamples(before.planes.at(plane), now.planes.at(plane), sampleBytes);
    changed = changed.united(plane == 0 ? part : scaled(part, stepX, stepY));
  }
  if (changed.isEmpty()) return {};
  // Chroma spreads over the luma pixels around it; up to the next chroma sample on each side.
  const PixelRect spread{(changed.x / stepX - 1) * stepX, (changed.y / stepY - 1) * stepY,
                         changed.width + 4 * stepX, changed.height + 4 * stepY};
  return spread.intersection(whole);
}

}  // namespace vesk::compositor
