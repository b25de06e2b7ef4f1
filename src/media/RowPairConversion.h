#pragma once

#include <cstdint>

namespace vesk::media {

/// Two rows of pixels and where their two rows of Y and one row each of Cb and Cr go.
struct RowPair {
  const std::uint8_t* top = nullptr;  ///< four bytes a pixel: blue, green, red, ignored
  const std::uint8_t* bottom = nullptr;
  std::uint8_t* lumaTop = nullptr;
  std::uint8_t* lumaBottom = nullptr;
  std::uint8_t* cb = nullptr;
  std::uint8_t* cr = nullptr;
};

/// BT.709 from full range RGB to limited range, in units of 2^-15. The weights fit 16 bits with
/// sign, so that one multiply-add instruction takes two channels at once.
namespace bt709 {

inline constexpr int shift = 15;
inline constexpr double red = 0.2126;
inline constexpr double blue = 0.0722;

constexpr int fixedPoint(double value) {
  return static_cast<int>(value * (1 << shift) + (value < 0 ? -0.5 : 0.5));
}

inline constexpr double lumaSpan = 219.0 / 255;
inline constexpr int lumaRed = fixedPoint(red * lumaSpan);
inline constexpr int lumaBlue = fixedPoint(blue * lumaSpan);
// The green weights are what the others leave, so that white is exactly 235 and grey exactly 128.
inline constexpr int lumaGreen = fixedPoint(lumaSpan) - lumaRed - lumaBlue;

inline constexpr double chromaSpan = 112.0 / 255;
inline constexpr int cbBlue = fixedPoint(chromaSpan);
inline constexpr int cbRed = fixedPoint(-red / (1 - blue) * chromaSpan);
inline constexpr int cbGreen = -cbBlue - cbRed;
inline constexpr int crRed = fixedPoint(chromaSpan);
inline constexpr int crBlue = fixedPoint(-blue / (1 - red) * chromaSpan);
inline constexpr int crGreen = -crRed - crBlue;

/// Black level and half a step for rounding.
inline constexpr int lumaOffset = (16 << shift) + (1 << (shift - 1));
/// Chroma is computed from the sum of four pixels, hence with two bits more.
inline constexpr int chromaShift = shift + 2;
inline constexpr int chromaOffset = (128 << chromaShift) + (1 << (chromaShift - 1));

}  // namespace bt709

/// Converts pixels `first` to `last` (both even) of two rows.
void convertRowPair(const RowPair& rows, int first, int last) noexcept;

#if defined(__x86_64__)
/// Converts as many pixels from 0 up to `width` as fill whole vectors and returns their number, an
/// even one. Only for processors with AVX2.
int convertRowPairAvx2(const RowPair& rows, int width) noexcept;
#endif

}  // namespace vesk::media
