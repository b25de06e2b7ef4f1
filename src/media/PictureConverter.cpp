#include "media/PictureConverter.h"

#include <algorithm>
#include <cassert>

#include "media/RowPairConversion.h"

namespace vesk::media {
namespace {

using ConvertFromStart = int (*)(const RowPair&, int) noexcept;

int convertNothing(const RowPair& /*rows*/, int /*width*/) noexcept {
  return 0;
}

ConvertFromStart fastestConversion() {
#if defined(__x86_64__)
  const bool hasAvx2 = __builtin_cpu_supports("avx2");
  if (hasAvx2) {
    return convertRowPairAvx2;
  }
#endif
  return convertNothing;
}

std::uint8_t* sampleAt(const I420Picture::Plane& plane, int x, int y) {
  return plane.data + y * plane.stride + x;
}

RowPair rowPairAt(const BgraView& source, const I420Picture& target, int x, int y) {
  const auto& [luma, cb, cr] = target.planes();
  const auto* top = source.data + y * source.stride + std::ptrdiff_t{4} * x;
  return {.top = top,
          .bottom = top + source.stride,
          .lumaTop = sampleAt(luma, x, y),
          .lumaBottom = sampleAt(luma, x, y + 1),
          .cb = sampleAt(cb, x / 2, y / 2),
          .cr = sampleAt(cr, x / 2, y / 2)};
}

}  // namespace

PixelRect evenRect(PixelRect rect, int pictureWidth, int pictureHeight) noexcept {
  const auto roundDown = [](int value) { return value & ~1; };
  const int left = roundDown(std::clamp(rect.x, 0, pictureWidth));
  const int top = roundDown(std::clamp(rect.y, 0, pictureHeight));
  const int right = roundDown(std::clamp(rect.x + rect.width, 0, pictureWidth) + 1);
  const int bottom = roundDown(std::clamp(rect.y + rect.height, 0, pictureHeight) + 1);
  return {left, top, std::max(right - left, 0), std::max(bottom - top, 0)};
}

void convertToI420(const BgraView& source, I420Picture& target) {
  convertToI420(source, {0, 0, source.width, source.height}, target);
}

void convertToI420(const BgraView& source, PixelRect part, I420Picture& target) {
  assert(source.width == target.width() && source.height == target.height());
  assert(part == evenRect(part, source.width, source.height));
  static const ConvertFromStart convertFromStart = fastestConversion();
  for (int y = part.y; y < part.y + part.height; y += 2) {
    const RowPair rows = rowPairAt(source, target, part.x, y);
    const int done = convertFromStart(rows, part.width);
    convertRowPair(rows, done, part.width);
  }
}

}  // namespace vesk::media
