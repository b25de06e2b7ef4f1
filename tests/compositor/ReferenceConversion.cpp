#include "compositor/ReferenceConversion.h"

#include <algorithm>
#include <cmath>

#include "compositor/TestPicture.h"

namespace vesk::compositor::test {
namespace {

using media::ChromaSiting;
using media::ColorMatrix;
using media::ColorRange;

double redWeight(ColorMatrix matrix) {
  if (matrix == ColorMatrix::bt601) return 0.299;
  return matrix == ColorMatrix::bt2020 ? 0.2627 : 0.2126;
}

double blueWeight(ColorMatrix matrix) {
  if (matrix == ColorMatrix::bt601) return 0.114;
  return matrix == ColorMatrix::bt2020 ? 0.0593 : 0.0722;
}

/// A sample scaled to what it would be with eight bits.
double inEightBitSteps(const media::VideoFrame& picture, int plane, int x, int y) {
  const media::VideoPlane& rows = picture.planes.at(static_cast<std::size_t>(plane));
  const int value =
      sampleAt(picture, plane, std::clamp(x, 0, rows.width - 1), std::clamp(y, 0, rows.height - 1));
  return media::bitsPerSample(picture.layout) == 8 ? value : value / 4.0;
}

/// Chroma at a luma pixel.
double chromaAt(const media::VideoFrame& picture, int plane, int x, int y) {
  const media::VideoPlane& rows = picture.planes.at(static_cast<std::size_t>(plane));
  const bool isHalfWide = rows.width != picture.width;
  const bool isHalfHigh = rows.height != picture.height;
  const bool leftColumn = picture.siting != ChromaSiting::centre;
  const bool topRow = picture.siting == ChromaSiting::topLeft;
  const double placeX = isHalfWide ? (x - (leftColumn ? 0 : 0.5)) / 2 : x;
  const double placeY = isHalfHigh ? (y - (topRow ? 0 : 0.5)) / 2 : y;
  const int left = static_cast<int>(std::floor(placeX));
  const int top = static_cast<int>(std::floor(placeY));
  const double partX = placeX - left;
  const double partY = placeY - top;
  const auto row = [&](int line) {
    return inEightBitSteps(picture, plane, left, line) * (1 - partX) +
           inEightBitSteps(picture, plane, left + 1, line) * partX;
  };
  return row(top) * (1 - partY) + row(top + 1) * partY;
}

}  // namespace

DoubleImage decoded(const media::VideoFrame& picture) {
  const bool isFull = picture.range == ColorRange::full;
  // The largest value: 255, or 1023 quarters of an eight-bit step.
  const double maximum = media::bitsPerSample(picture.layout) == 8 ? 255 : 1023 / 4.0;
  const double red = redWeight(picture.matrix);
  const double blue = blueWeight(picture.matrix);
  DoubleImage image(picture.width, picture.height);
  for (int y = 0; y < picture.height; ++y) {
    for (int x = 0; x < picture.width; ++x) {
      const double sample = inEightBitSteps(picture, 0, x, y);
      const double luma = isFull ? sample / maximum : (sample - 16) / 219;
      const double span = isFull ? maximum : 224;
      const double cb = (chromaAt(picture, 1, x, y) - 128) / span;
      const double cr = (chromaAt(picture, 2, x, y) - 128) / span;
      const double r = luma + 2 * (1 - red) * cr;
      const double b = luma + 2 * (1 - blue) * cb;
      // Luma is the weighted sum of the three, which leaves green.
      const double g = (luma - red * r - blue * b) / (1 - red - blue);
      image.at(x, y) = inEightBits({r, g, b, 1});
    }
  }
  return image;
}

}  // namespace vesk::compositor::test
