#pragma once

#include <cstddef>
#include <expected>

#include "gpu/GpuError.h"
#include "gpu/Texture.h"

namespace vesk::gpu {

/// Draws into level 0 of a texture, which must outlive it. Row 0 is the top of the picture.
class Framebuffer {
 public:
  static std::expected<Framebuffer, GpuError> create(const Texture& color);

  Framebuffer(Framebuffer&& other) noexcept;
  Framebuffer& operator=(Framebuffer&& other) noexcept;
  Framebuffer(const Framebuffer&) = delete;
  Framebuffer& operator=(const Framebuffer&) = delete;
  ~Framebuffer();

  int width() const { return width_; }
  int height() const { return height_; }
  PixelRect bounds() const { return {0, 0, width_, height_}; }
  unsigned int handle() const { return handle_; }

  /// Waits for the drawing and copies `rect` back in the texture's format.
  /// @param pixels the first byte of the whole picture of this size, row 0 first; only the bytes of
  /// `rect` are written.
  /// @param stride bytes from one row to the next, a multiple of the pixel's.
  void read(std::byte* pixels, std::ptrdiff_t stride, const PixelRect& rect) const;

 private:
  Framebuffer(unsigned int handle, const Texture& color);

  unsigned int handle_ = 0;
  int width_ = 0;
  int height_ = 0;
  PixelFormat format_ = PixelFormat::bgra8;
};

}  // namespace vesk::gpu
