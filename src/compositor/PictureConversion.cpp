#include "compositor/PictureConversion.h"

namespace vesk::compositor {
namespace {

struct LumaWeights {
  double red;
  double blue;
};

LumaWeights lumaWeights(media::ColorMatrix matrix) {
  switch (matrix) {
    case media::ColorMatrix::bt601:
      return {.red = 0.299, .blue = 0.114};
    case media::ColorMatrix::bt2020:
      return {.red = 0.2627, .blue = 0.0593};
    case media::ColorMatrix::bt709:
      break;
  }
  return {.red = 0.2126, .blue = 0.0722};
}

// Takes a texture's value to Y in 0…1 or to Cb and Cr in −0.5…0.5.
struct Expansion {
  double lumaScale;
  double lumaOffset;
  double chromaScale;
  double chromaOffset;
};

Expansion expansion(const media::VideoFrame& frame) {
  const int bits = media::bitsPerSample(frame.layout);
  const double textureMaximum = media::bytesPerSample(frame.layout) == 1 ? 255.0 : 65535.0;
  const double step = 1U << static_cast<unsigned>(bits - 8);
  const double maximum = 256 * step - 1;
  const double middle = 128 * step;
  const bool full = frame.range == media::ColorRange::full;
  const double black = full ? 0 : 16 * step;
  const double lumaSpan = full ? maximum : 219 * step;
  const double chromaSpan = full ? maximum : 224 * step;
  return {.lumaScale = textureMaximum / lumaSpan,
          .lumaOffset = -black / lumaSpan,
          .chromaScale = textureMaximum / chromaSpan,
          .chromaOffset = -middle / chromaSpan};
}

}  // namespace

PictureConversion pictureConversion(const media::VideoFrame& frame) {
  const LumaWeights weights = lumaWeights(frame.matrix);
  const double green = 1 - weights.red - weights.blue;
  const double redFromCr = 2 * (1 - weights.red);
  const double blueFromCb = 2 * (1 - weights.blue);
  // Columns: what Y, Cb, Cr and the constant add to red, green, blue.
  const glm::dmat4 fromExpanded(
      glm::dvec4(1, 1, 1, 0), glm::dvec4(0, -blueFromCb * weights.blue / green, blueFromCb, 0),
      glm::dvec4(redFromCr, -redFromCr * weights.red / green, 0, 0), glm::dvec4(0, 0, 0, 1));
  const Expansion e = expansion(frame);
  const glm::dmat4 expand(glm::dvec4(e.lumaScale, 0, 0, 0), glm::dvec4(0, e.chromaScale, 0, 0),
                          glm::dvec4(0, 0, e.chromaScale, 0),
                          glm::dvec4(e.lumaOffset, e.chromaOffset, e.chromaOffset, 1));

  const media::VideoPlane& luma = frame.planes[0];
  const media::VideoPlane& chroma = frame.planes[1];
  const glm::dvec2 step(luma.width > chroma.width ? 2 : 1, luma.height > chroma.height ? 2 : 1);
  const glm::dvec2 chromaSize(chroma.width, chroma.height);
  // In luma pixels from the first luma sample to the first chroma sample.
  glm::dvec2 siting = (step - 1.0) / 2.0;
  if (frame.siting != media::ChromaSiting::centre) siting.x = 0;
  if (frame.siting == media::ChromaSiting::topLeft) siting.y = 0;
  return {.toRgb = glm::mat4(fromExpanded * expand),
          .chromaScale = glm::vec2(1.0 / (step * chromaSize)),
          .chromaOffset = glm::vec2((0.5 - siting / step) / chromaSize)};
}

}  // namespace vesk::compositor
