#include "compositor/PictureTexture.h"

#include <algorithm>
#include <utility>

#include "compositor/PictureChange.h"
#include "compositor/PictureConversion.h"
#include "vesk_compositor_shaders.h"

namespace vesk::compositor {
namespace {

using gpu::PixelRect;

gpu::PixelFormat planeFormat(const media::VideoFrame& frame) {
  return media::bytesPerSample(frame.layout) == 1 ? gpu::PixelFormat::r8 : gpu::PixelFormat::r16;
}

// The samples of a plane that belong to a part of the picture.
PixelRect planePart(const media::VideoFrame& frame, const media::VideoPlane& plane,
                    const PixelRect& part) {
  const int stepX = frame.width > plane.width ? 2 : 1;
  const int stepY = frame.height > plane.height ? 2 : 1;
  const int left = part.x / stepX;
  const int top = part.y / stepY;
  return PixelRect{left, top, (part.right() + stepX - 1) / stepX - left,
                   (part.bottom() + stepY - 1) / stepY - top}
      .intersection({0, 0, plane.width, plane.height});
}

}  // namespace

PictureTexture::PictureTexture(gpu::Pipeline convert) : convert_(std::move(convert)) {}

std::expected<PictureTexture, gpu::GpuError> PictureTexture::create() {
  auto convert = gpu::Pipeline::create(shaders::convertVertex, shaders::convertFragment,
                                       gpu::Pipeline::Blending::off);
  if (!convert) return std::unexpected(convert.error());
  return PictureTexture(std::move(*convert));
}

std::expected<PictureTexture::Storage, gpu::GpuError> PictureTexture::allocate(
    const gpu::Device& device, const media::VideoFrame& frame) {
  std::vector<gpu::Texture> planes;
  for (const media::VideoPlane& plane : frame.planes) {
    auto texture = gpu::Texture::create(device, plane.width, plane.height, planeFormat(frame));
    if (!texture) return std::unexpected(texture.error());
    planes.push_back(std::move(*texture));
  }
  auto rgb = gpu::Texture::create(device, frame.width, frame.height, gpu::PixelFormat::bgra8,
                                  gpu::Texture::Mips::full);
  if (!rgb) return std::unexpected(rgb.error());
  auto target = gpu::Framebuffer::create(*rgb);
  if (!target) return std::unexpected(target.error());
  return Storage{std::move(planes), std::move(*rgb), std::move(*target)};
}

bool PictureTexture::storageFits(const media::VideoFrame& frame) const {
  if (!storage_ || storage_->rgb.width() != frame.width || storage_->rgb.height() != frame.height) {
    return false;
  }
  return std::ranges::equal(storage_->planes, frame.planes,
                            [&](const gpu::Texture& texture, const media::VideoPlane& plane) {
                              return texture.width() == plane.width &&
                                     texture.height() == plane.height &&
                                     texture.format() == planeFormat(frame);
                            });
}

std::expected<PixelRect, gpu::GpuError> PictureTexture::show(const gpu::Device& device,
                                                             const media::VideoFrame& frame,
                                                             gpu::UniformBuffers& uniforms) {
  PixelRect changed{0, 0, frame.width, frame.height};
  if (!storageFits(frame)) {
    auto storage = allocate(device, frame);
    if (!storage) return std::unexpected(storage.error());
    storage_ = std::move(*storage);
  } else if (frame_) {
    changed = changedPixels(*frame_, frame);
  }
  frame_ = frame;
  if (changed.isEmpty()) return changed;
  upload(frame, changed);
  const PictureConversion conversion = pictureConversion(frame);
  gpu::RenderPass pass(storage_->target, uniforms, changed, std::nullopt);
  pass.draw(convert_, gpu::recordBytes(conversion), {},
            {{storage_->planes[0]}, {storage_->planes[1]}, {storage_->planes[2]}});
  mipsAreStale_ = true;
  return changed;
}

void PictureTexture::upload(const media::VideoFrame& frame, const PixelRect& part) {
  for (std::size_t index = 0; index < frame.planes.size(); ++index) {
    const media::VideoPlane& plane = frame.planes.at(index);
    storage_->planes[index].upload(plane.data, plane.stride, planePart(frame, plane, part));
  }
}

const gpu::Texture& PictureTexture::texture(gpu::TextureBinding::Levels levels) {
  if (levels == gpu::TextureBinding::Levels::all && std::exchange(mipsAreStale_, false))
    storage_->rgb.generateMips();
  return storage_->rgb;
}

}  // namespace vesk::compositor
