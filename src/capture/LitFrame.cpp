#include "capture/LitFrame.h"

#include <cstddef>

namespace vesk::capture {
namespace {

constexpr int rows = 16;
constexpr int columns = 20;
constexpr int darkestLitSum = 8 * rows * columns;
constexpr std::ptrdiff_t bytesPerPixel = 4;
constexpr std::ptrdiff_t greenByte = 1;

}  // namespace

bool isLit(const media::BgraView& picture) {
  if (!picture.data || picture.width < 1 || picture.height < 1) return true;
  int sum = 0;
  for (int i = 0; i < rows; ++i) {
    const auto* const row =
        picture.data + picture.stride * static_cast<std::ptrdiff_t>(picture.height * i / rows);
    for (int j = 0; j < columns; ++j) {
      sum += row[bytesPerPixel * (picture.width * j / columns) + greenByte];
    }
  }
  return sum >= darkestLitSum;
}

}  // namespace vesk::capture
