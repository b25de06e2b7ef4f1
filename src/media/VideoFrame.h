#pragma once

#include <array>
#include <cstddef>
#include <memory>

namespace vesk::media {

/// How the three planes of a decoded picture (Y, Cb, Cr) are stored. A sample of the 10-bit
/// layouts takes two bytes in the machine's byte order, its value in the low ten bits.
enum class PixelLayout {
  yuv420p8,
  yuv422p8,
  yuv444p8,
  yuv420p10,
  yuv422p10,
  yuv444p10,
};

[[nodiscard]] constexpr int bitsPerSample(PixelLayout layout) noexcept {
  return layout < PixelLayout::yuv420p10 ? 8 : 10;
}

[[nodiscard]] constexpr int bytesPerSample(PixelLayout layout) noexcept {
  return layout < PixelLayout::yuv420p10 ? 1 : 2;
}

/// Which weights made Y, Cb and Cr from RGB: ITU-R BT.601, BT.709 or BT.2020 (non-constant
/// luminance).
enum class ColorMatrix { bt601, bt709, bt2020 };

/// limited: in 8 bits Y spans 16…235 and chroma 16…240. full: 0…255.
enum class ColorRange { limited, full };

/// Where a sample of subsampled chroma lies among the luma samples it belongs to.
enum class ChromaSiting {
  left,     ///< on the left luma column, between the rows
  centre,   ///< between the columns and between the rows
  topLeft,  ///< on the top-left luma sample
};

struct VideoPlane {
  const std::byte* data = nullptr;  ///< the top row first
  std::ptrdiff_t stride = 0;        ///< bytes from one row to the next, positive
  int width = 0;                    ///< in samples
  int height = 0;                   ///< in rows
};

/// A decoded picture: immutable, reference-counted and cheap to copy. May be read and dropped on
/// any thread, and outlives the reader that made it.
struct VideoFrame {
  int width = 0;
  int height = 0;
  PixelLayout layout = PixelLayout::yuv420p8;
  std::array<VideoPlane, 3> planes;
  ColorMatrix matrix = ColorMatrix::bt709;
  ColorRange range = ColorRange::limited;
  ChromaSiting siting = ChromaSiting::left;
  double pts = 0;                       ///< seconds on the file's own time line
  std::shared_ptr<const void> storage;  ///< keeps the planes' memory alive

  /// True for two copies of one decoded picture. Says nothing about pictures that merely look the
  /// same.
  [[nodiscard]] bool isSamePictureAs(const VideoFrame& other) const noexcept {
    return storage != nullptr && storage == other.storage;
  }
};

}  // namespace vesk::media
