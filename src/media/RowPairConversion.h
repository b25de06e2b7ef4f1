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

inline constexpr int kShift = 15;
inline constexpr double kRed = 0.2126;
inline constexpr double kBlue = 0.0722;

constexpr int fixedPoint(double value) {
  return static_cast<int>(value * (1 << kShift) + (value < 0 ? -0.5 : 0.5));
}

inline constexpr double kLumaSpan = 219.0 / 255;
inline constexpr int kLumaRed = fixedPoint(kRed * kLumaSpan);
inline constexpr int kLumaBlue = fixedPoint(kBlue * kLumaSpan);
// The green weights are what the others leave, so that white is exactly 235 and grey exactly 128.
inline constexpr int kLumaGreen = fixedPoint(kLumaSpan) - kLumaRed - kLumaBlue;

inline constexpr double kChromaSpan = 112.0 / 255;
inline constexpr int kCbBlue = fixedPoint(kChromaSpan);
inline constexpr int kCbRed = fixedPoint(-kRed / (1 - kBlue) * kChromaSpan);
inline constexpr int kCbGreen = -kCbBlue - kCbRed;
inline constexpr int kCrRed = fixedPoint(kChromaSpan);
inline constexpr int kCrBlue = fixedPoint(-kBlue / (1 - kRed) * kChromaSpan);
inline constexpr int kCrGreen = -kCrRed - kCrBlue;

/// Black level and half a step for rounding.
inline constexpr int kLumaOffset = (16 << kShift) + (1 << (kShift - 1));
/// Chroma is computed from the sum of four pixels, hence with two bits more.
inline constexpr int kChromaShift = kShift + 2;
inline constexpr int kChromaOffset = (128 << kChromaShift) + (1 << (kChromaShift - 1));

}  // namespace bt709

/// Converts pixels `first` to `last` (both even) of two rows.
void convertRowPair(const RowPair& rows, int first, int last) noexcept;

#if defined(__x86_64__)
/// Converts as many pixels from 0 up to `width` as fill whole vectors and returns their number, an
/// even one. Only for processors with AVX2.
int convertRowPairAvx2(const RowPair& rows, int width) noexcept;
#endif

}  // namespace vesk::media
