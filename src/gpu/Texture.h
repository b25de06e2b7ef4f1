#pragma once

#include <cstddef>
#include <expected>

#include "gpu/Device.h"
#include "gpu/GpuError.h"
#include "gpu/PixelRect.h"

namespace vesk::gpu {

/// Layout of a texture's pixels and of the bytes that go up or come back.
enum class PixelFormat {
  r8,     ///< one 8-bit channel
  r16,    ///< one 16-bit channel
  bgra8,  ///< four 8-bit channels, in memory blue, green, red, alpha
};

/// A two-dimensional texture, row 0 the top of the picture, edges clamped, linear filtering.
/// Lives and dies on the thread of its context.
class Texture {
 public:
  enum class Mips { none, full };

  /// @param width, height 1 … the device's maxTextureSize.
  static std::expected<Texture, GpuError> create(const Device& device, int width, int height,
                                                 PixelFormat format, Mips mips = Mips::none);

  Texture(Texture&& other) noexcept;
  Texture& operator=(Texture&& other) noexcept;
  Texture(const Texture&) = delete;
  Texture& operator=(const Texture&) = delete;
  ~Texture();

  int width() const { return width_; }
  int height() const { return height_; }
  PixelFormat format() const { return format_; }
  bool hasMips() const { return hasMips_; }
  PixelRect bounds() const { return {0, 0, width_, height_}; }
  unsigned int handle() const { return handle_; }

  /// Replaces the pixels of `rect` (inside the texture) at level 0.
  /// @param pixels the first byte of the whole picture, row 0 first.
  /// @param stride bytes from one row to the next.
  void upload(const std::byte* pixels, std::ptrdiff_t stride, const PixelRect& rect);

  /// Rebuilds the smaller levels from level 0.
  void generateMips();

 private:
  Texture(unsigned int handle, int width, int height, PixelFormat format, bool hasMips);

  unsigned int handle_ = 0;
  int width_ = 0;
  int height_ = 0;
  PixelFormat format_ = PixelFormat::bgra8;
  bool hasMips_ = false;
};

}  // namespace vesk::gpu
