#include "media/RowPairConversion.h"

#include <cstddef>

namespace vesk::media {
namespace {

struct Pixel {
  int blue = 0;
  int green = 0;
  int red = 0;
};

Pixel pixelAt(const std::uint8_t* row, int x) {
  const std::uint8_t* bytes = row + std::ptrdiff_t{4} * x;
  return {bytes[0], bytes[1], bytes[2]};
}

Pixel operator+(const Pixel& a, const Pixel& b) {
  return {a.blue + b.blue, a.green + b.green, a.red + b.red};
}

std::uint8_t luma(const Pixel& pixel) {
  using namespace bt709;
  return static_cast<std::uint8_t>(
      (lumaBlue * pixel.blue + lumaGreen * pixel.green + lumaRed * pixel.red + lumaOffset) >>
      shift);
}

}  // namespace

void convertRowPair(const RowPair& rows, int first, int last) noexcept {
  using namespace bt709;
  for (int x = first; x < last; x += 2) {
    const Pixel topLeft = pixelAt(rows.top, x);
    const Pixel topRight = pixelAt(rows.top, x + 1);
    const Pixel bottomLeft = pixelAt(rows.bottom, x);
    const Pixel bottomRight = pixelAt(rows.bottom, x + 1);
    rows.lumaTop[x] = luma(topLeft);
    rows.lumaTop[x + 1] = luma(topRight);
    rows.lumaBottom[x] = luma(bottomLeft);
    rows.lumaBottom[x + 1] = luma(bottomRight);

    const Pixel sum = topLeft + topRight + bottomLeft + bottomRight;
    const int cb = cbBlue * sum.blue + cbGreen * sum.green + cbRed * sum.red + chromaOffset;
    const int cr = crBlue * sum.blue + crGreen * sum.green + crRed * sum.red + chromaOffset;
    rows.cb[x / 2] = static_cast<std::uint8_t>(cb >> chromaShift);
    rows.cr[x / 2] = static_cast<std::uint8_t>(cr >> chromaShift);
  }
}

}  // namespace vesk::media
