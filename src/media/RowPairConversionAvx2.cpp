// Compiled for AVX2 and called only where the processor has it. Nothing here may instantiate
// inline code of the standard library: the linker could hand that copy to everyone else.
#include <immintrin.h>

#include "media/RowPairConversion.h"

namespace vesk::media {
namespace {

constexpr int pixelsPerVector = 8;
constexpr int vectors = 4;
constexpr int pixelsPerStep = pixelsPerVector * vectors;

/// Pixels spread to 16-bit lanes: blue and red of one pixel side by side, green beside zero.
struct Channels {
  __m256i blueRed;
  __m256i green;
};

/// The weights of blue, green and red in the same arrangement.
struct Weights {
  __m256i blueRed;
  __m256i green;
};

Weights weights(int blue, int green, int red) {
  return {_mm256_set1_epi32((red << 16) | (blue & 0xffff)), _mm256_set1_epi32(green & 0xffff)};
}

Channels load(const std::uint8_t* pixels) {
  const __m256i lowBytes = _mm256_set1_epi32(0x00ff00ff);
  const __m256i packed = _mm256_loadu_si256(reinterpret_cast<const __m256i*>(pixels));
  return {_mm256_and_si256(packed, lowBytes),
          _mm256_and_si256(_mm256_srli_epi32(packed, 8), _mm256_set1_epi32(0xff))};
}

Channels add(const Channels& a, const Channels& b) {
  return {_mm256_add_epi16(a.blueRed, b.blueRed), _mm256_add_epi16(a.green, b.green)};
}

__m256i weigh(const Channels& channels, const Weights& by) {
  return _mm256_add_epi32(_mm256_madd_epi16(channels.blueRed, by.blueRed),
                          _mm256_madd_epi16(channels.green, by.green));
}

/// Four vectors of eight 32-bit values to the 32 bytes they hold, in order.
void storeLuma(const __m256i* sums, std::uint8_t* target) {
  const __m256i offset = _mm256_set1_epi32(bt709::lumaOffset);
  __m256i luma[vectors];
  for (int i = 0; i < vectors; ++i) {
    luma[i] = _mm256_srli_epi32(_mm256_add_epi32(sums[i], offset), bt709::shift);
  }
  const __m256i bytes = _mm256_packus_epi16(_mm256_packs_epi32(luma[0], luma[1]),
                                            _mm256_packs_epi32(luma[2], luma[3]));
  // Packing works within each half of a vector and so leaves groups of four pixels interleaved.
  const __m256i order = _mm256_setr_epi32(0, 4, 1, 5, 2, 6, 3, 7);
  _mm256_storeu_si256(reinterpret_cast<__m256i*>(target),
                      _mm256_permutevar8x32_epi32(bytes, order));
}

/// Four vectors of eight column sums to the 16 bytes that their neighbouring pairs make.
void storeChroma(const __m256i* sums, std::uint8_t* target) {
  const __m256i offset = _mm256_set1_epi32(bt709::chromaOffset);
  const __m256i first = _mm256_srli_epi32(
      _mm256_add_epi32(_mm256_hadd_epi32(sums[0], sums[1]), offset), bt709::chromaShift);
  const __m256i second = _mm256_srli_epi32(
      _mm256_add_epi32(_mm256_hadd_epi32(sums[2], sums[3]), offset), bt709::chromaShift);
  const __m256i words = _mm256_packs_epi32(first, second);
  const __m256i bytes = _mm256_packus_epi16(words, words);
  // Each half now holds pairs of bytes of the four vectors, the lower pairs in the lower half.
  _mm_storeu_si128(
      reinterpret_cast<__m128i*>(target),
      _mm_unpacklo_epi16(_mm256_castsi256_si128(bytes), _mm256_extracti128_si256(bytes, 1)));
}

}  // namespace

int convertRowPairAvx2(const RowPair& rows, int width) noexcept {
  using namespace bt709;
  const Weights toLuma = weights(lumaBlue, lumaGreen, lumaRed);
  const Weights toCb = weights(cbBlue, cbGreen, cbRed);
  const Weights toCr = weights(crBlue, crGreen, crRed);

  int x = 0;
  for (; x + pixelsPerStep <= width; x += pixelsPerStep) {
    __m256i lumaTop[vectors];
    __m256i lumaBottom[vectors];
    __m256i cb[vectors];
    __m256i cr[vectors];
    for (int i = 0; i < vectors; ++i) {
      const int byteOffset = 4 * (x + i * pixelsPerVector);
      const Channels top = load(rows.top + byteOffset);
      const Channels bottom = load(rows.bottom + byteOffset);
      lumaTop[i] = weigh(top, toLuma);
      lumaBottom[i] = weigh(bottom, toLuma);
      const Channels column = add(top, bottom);
      cb[i] = weigh(column, toCb);
      cr[i] = weigh(column, toCr);
    }
    storeLuma(lumaTop, rows.lumaTop + x);
    storeLuma(lumaBottom, rows.lumaBottom + x);
    storeChroma(cb, rows.cb + x / 2);
    storeChroma(cr, rows.cr + x / 2);
  }
  return x;
}

}  // namespace vesk::media
