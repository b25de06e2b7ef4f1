#include "gpu/Framebuffer.h"

#include <epoxy/gl.h>

#include <cassert>
#include <utility>

#include "gpu/TransferFormat.h"

namespace vesk::gpu {

Framebuffer::Framebuffer(unsigned int handle, const Texture& color)
    : handle_(handle), width_(color.width()), height_(color.height()), format_(color.format()) {}

Framebuffer::Framebuffer(Framebuffer&& other) noexcept
    : handle_(std::exchange(other.handle_, 0)),
      width_(other.width_),
      height_(other.height_),
      format_(other.format_) {}

Framebuffer& Framebuffer::operator=(Framebuffer&& other) noexcept {
  std::swap(handle_, other.handle_);
  width_ = other.width_;
  height_ = other.height_;
  format_ = other.format_;
  return *this;
}

Framebuffer::~Framebuffer() {
  if (handle_ != 0) glDeleteFramebuffers(1, &handle_);
}

std::expected<Framebuffer, GpuError> Framebuffer::create(const Texture& color) {
  GLuint handle = 0;
  glGenFramebuffers(1, &handle);
  glBindFramebuffer(GL_FRAMEBUFFER, handle);
  glFramebufferTexture2D(GL_FRAMEBUFFER, GL_COLOR_ATTACHMENT0, GL_TEXTURE_2D, color.handle(), 0);
  Framebuffer framebuffer(handle, color);
  if (glCheckFramebufferStatus(GL_FRAMEBUFFER) != GL_FRAMEBUFFER_COMPLETE) {
    return std::unexpected(
        GpuError{GpuError::Kind::unsupported, "the texture cannot be drawn into"});
  }
  return framebuffer;
}

void Framebuffer::read(std::byte* pixels, std::ptrdiff_t stride, const PixelRect& rect) const {
  const TransferFormat format = transferFormat(format_);
  assert(rect.intersection(bounds()) == rect && stride % format.bytes == 0);
  if (rect.isEmpty()) return;
  glBindFramebuffer(GL_READ_FRAMEBUFFER, handle_);
  glPixelStorei(GL_PACK_ALIGNMENT, 1);
  glPixelStorei(GL_PACK_ROW_LENGTH, static_cast<GLint>(stride / format.bytes));
  glReadPixels(rect.x, rect.y, rect.width, rect.height, format.components, format.type,
               pixels + rect.y * stride + static_cast<std::ptrdiff_t>(rect.x) * format.bytes);
  glPixelStorei(GL_PACK_ROW_LENGTH, 0);
}

}  // namespace vesk::gpu
