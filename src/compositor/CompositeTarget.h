#pragma once

#include <expected>
#include <optional>

#include "compositor/CompositeDamage.h"
#include "compositor/CompositePlan.h"
#include "compositor/PreviewRenderer.h"
#include "gpu/Framebuffer.h"
#include "gpu/Texture.h"

namespace vesk::compositor {

/// A canvas that keeps the last composite, so that the next one has to draw only what differs.
class CompositeTarget {
 public:
  enum class Redraw {
    changed,  ///< what differs from the composite before
    always,   ///< everything, to check the other against
  };

  static std::expected<CompositeTarget, gpu::GpuError> create(const gpu::Device& device, int width,
                                                              int height);

  /// Brings the canvas to `plan` over the pictures that `renderer` shows.
  /// @param changes what changed in these pictures since the last call.
  /// @param clearColor what stands where nothing is drawn.
  /// @return the area whose pixels may have changed.
  CompositeDamage draw(PreviewRenderer& renderer, const CompositePlan& plan,
                       const PictureChanges& changes, const glm::vec4& clearColor, Redraw redraw);

  const gpu::Texture& texture() const { return texture_; }
  const gpu::Framebuffer& framebuffer() const { return framebuffer_; }

 private:
  CompositeTarget(gpu::Texture texture, gpu::Framebuffer framebuffer);

  gpu::Texture texture_;
  gpu::Framebuffer framebuffer_;  ///< draws into texture_
  std::optional<CompositePlan> drawn_;
};

}  // namespace vesk::compositor
