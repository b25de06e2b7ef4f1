#include "compositor/CompositeTarget.h"

#include <utility>

#include "gpu/RenderPass.h"

namespace vesk::compositor {

CompositeTarget::CompositeTarget(gpu::Texture texture, gpu::Framebuffer framebuffer)
    : texture_(std::move(texture)), framebuffer_(std::move(framebuffer)) {}

std::expected<CompositeTarget, gpu::GpuError> CompositeTarget::create(const gpu::Device& device,
                                                                      int width, int height) {
  auto texture = gpu::Texture::create(device, width, height, gpu::PixelFormat::bgra8);
  if (!texture) return std::unexpected(texture.error());
  auto framebuffer = gpu::Framebuffer::create(*texture);
  if (!framebuffer) return std::unexpected(framebuffer.error());
  return CompositeTarget(std::move(*texture), std::move(*framebuffer));
}

CompositeDamage CompositeTarget::draw(PreviewRenderer& renderer, const CompositePlan& plan,
                                      const PictureChanges& changes, const glm::vec4& clearColor,
                                      Redraw redraw) {
  CompositeDamage damage{.isEverything = true};
  if (drawn_ && redraw == Redraw::changed) {
    damage =
        compositeDamage(*drawn_, plan, changes, renderer.pictureWidth(), renderer.pictureHeight());
  }
  const auto drawPart = [&](const gpu::PixelRect& part) {
    gpu::RenderPass pass(framebuffer_, renderer.uniformBuffers(), part, clearColor);
    renderer.encodeComposite(pass, plan);
  };
  if (damage.isEverything) drawPart(framebuffer_.bounds());
  for (const gpu::PixelRect& rect : damage.rects) drawPart(rect);
  drawn_ = plan;
  return damage;
}

}  // namespace vesk::compositor
