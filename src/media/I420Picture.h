#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <memory>

namespace vesk::media {

/// A picture to be encoded, in writable memory of its own: 8-bit Y, Cb, Cr, the latter two at half
/// width and height, BT.709 limited range, chroma sited in the centre of its four pixels. Starts
/// black.
class I420Picture {
 public:
  struct Plane {
    std::uint8_t* data = nullptr;  ///< aligned to 64 bytes
    std::ptrdiff_t stride = 0;     ///< bytes, a multiple of 64
    int width = 0;
    int height = 0;
  };

  /// Width and height must be positive and even.
  I420Picture(int width, int height);

  [[nodiscard]] int width() const noexcept { return planes_[0].width; }
  [[nodiscard]] int height() const noexcept { return planes_[0].height; }
  /// Y, Cb, Cr.
  [[nodiscard]] const std::array<Plane, 3>& planes() const noexcept { return planes_; }

  /// Of all planes, which lie in one piece from the first sample of Y on.
  [[nodiscard]] std::size_t byteCount() const noexcept { return size_; }

  /// Takes over every pixel of a picture of the same size.
  void copyFrom(const I420Picture& other);

 private:
  struct Release {
    void operator()(std::uint8_t* memory) const noexcept;
  };
  std::size_t size_ = 0;
  std::unique_ptr<std::uint8_t[], Release> memory_;
  std::array<Plane, 3> planes_;
};

}  // namespace vesk::media
