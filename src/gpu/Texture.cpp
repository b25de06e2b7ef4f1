#include "gpu/Texture.h"

#include <epoxy/gl.h>

#include <algorithm>
#include <bit>
#include <cassert>
#include <string>
#include <utility>

#include "gpu/TransferFormat.h"

namespace vesk::gpu {
namespace {

// Anisotropy smooths the far side of a tilted picture; more than this is not seen.
constexpr float usefulAnisotropy = 8;

}  // namespace

Texture::Texture(unsigned int handle, int width, int height, PixelFormat format, bool hasMips)
    : handle_(handle), width_(width), height_(height), format_(format), hasMips_(hasMips) {}

Texture::Texture(Texture&& other) noexcept
    : handle_(std::exchange(other.handle_, 0)),
      width_(other.width_),
      height_(other.height_),
      format_(other.format_),
      hasMips_(other.hasMips_) {}

Texture& Texture::operator=(Texture&& other) noexcept {
  std::swap(handle_, other.handle_);
  width_ = other.width_;
  height_ = other.height_;
  format_ = other.format_;
  hasMips_ = other.hasMips_;
  return *this;
}

Texture::~Texture() {
  if (handle_ != 0) glDeleteTextures(1, &handle_);
}

std::expected<Texture, GpuError> Texture::create(const Device& device, int width, int height,
                                                 PixelFormat format, Mips mips) {
  const Device::Capabilities& capabilities = device.capabilities();
  if (width < 1 || height < 1 || width > capabilities.maxTextureSize ||
      height > capabilities.maxTextureSize) {
    return std::unexpected(GpuError{GpuError::Kind::unsupported,
                                    "a texture of " + std::to_string(width) + "x" +
                                        std::to_string(height) + " is not possible here"});
  }
  const bool mipped = mips == Mips::full;
  const int levels =
      mipped ? static_cast<int>(std::bit_width(static_cast<unsigned>(std::max(width, height)))) : 1;
  GLuint handle = 0;
  glGenTextures(1, &handle);
  glBindTexture(GL_TEXTURE_2D, handle);
  glTexStorage2D(GL_TEXTURE_2D, levels, transferFormat(format).internal, width, height);
  Texture texture(handle, width, height, format, mipped);
  if (glGetError() == GL_OUT_OF_MEMORY) {
    return std::unexpected(
        GpuError{GpuError::Kind::outOfMemory, "no graphics memory for a texture"});
  }
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_S, GL_CLAMP_TO_EDGE);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_WRAP_T, GL_CLAMP_TO_EDGE);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MAG_FILTER, GL_LINEAR);
  glTexParameteri(GL_TEXTURE_2D, GL_TEXTURE_MIN_FILTER, GL_LINEAR);
  if (mipped && capabilities.maxAnisotropy > 1) {
    glTexParameterf(GL_TEXTURE_2D, GL_TEXTURE_MAX_ANISOTROPY,
                    std::min(capabilities.maxAnisotropy, usefulAnisotropy));
  }
  return texture;
}

void Texture::upload(const std::byte* pixels, std::ptrdiff_t stride, const PixelRect& rect) {
  assert(rect.intersection(bounds()) == rect);
  if (rect.isEmpty()) return;
  const TransferFormat format = transferFormat(format_);
  glBindTexture(GL_TEXTURE_2D, handle_);
  // Strides that are no multiple of the pixel cannot be told to OpenGL; such rows go up singly.
  const bool strideFits = stride > 0 && stride % format.bytes == 0;
  glPixelStorei(GL_UNPACK_ALIGNMENT, 1);
  glPixelStorei(GL_UNPACK_ROW_LENGTH, strideFits ? static_cast<GLint>(stride / format.bytes) : 0);
  const std::byte* first =
      pixels + rect.y * stride + static_cast<std::ptrdiff_t>(rect.x) * format.bytes;
  if (strideFits) {
    glTexSubImage2D(GL_TEXTURE_2D, 0, rect.x, rect.y, rect.width, rect.height, format.components,
                    format.type, first);
  } else {
    for (int row = 0; row < rect.height; ++row) {
      glTexSubImage2D(GL_TEXTURE_2D, 0, rect.x, rect.y + row, rect.width, 1, format.components,
                      format.type, first + row * stride);
    }
  }
  glPixelStorei(GL_UNPACK_ROW_LENGTH, 0);
}

void Texture::generateMips() {
  if (!hasMips_) return;
  glBindTexture(GL_TEXTURE_2D, handle_);
  glGenerateMipmap(GL_TEXTURE_2D);
}

}  // namespace vesk::gpu
