#pragma once

#include <expected>
#include <optional>
#include <vector>

#include "gpu/Device.h"
#include "gpu/Framebuffer.h"
#include "gpu/Pipeline.h"
#include "gpu/RenderPass.h"
#include "gpu/Texture.h"
#include "media/VideoFrame.h"

namespace vesk::compositor {

/// A decoded picture on the graphics processor: its planes go up as they are, one pass turns them
/// into RGB, and smaller levels follow when somebody needs them. Work is done only for the part of
/// the picture that changed.
class PictureTexture {
 public:
  static std::expected<PictureTexture, gpu::GpuError> create();

  /// Makes `frame` the picture; a failure leaves the one before.
  /// @return the pixels that differ from the picture before; empty when it was the same.
  std::expected<gpu::PixelRect, gpu::GpuError> show(const gpu::Device& device,
                                                    const media::VideoFrame& frame,
                                                    gpu::UniformBuffers& uniforms);
  /// Forgets the picture.
  void clear() { frame_.reset(); }

  bool isEmpty() const { return !frame_.has_value(); }
  int width() const { return frame_ ? frame_->width : 0; }
  int height() const { return frame_ ? frame_->height : 0; }

  /// The picture as RGB; must not be empty. `all` brings the smaller levels up to date.
  const gpu::Texture& texture(gpu::TextureBinding::Levels levels);

 private:
  struct Storage {
    std::vector<gpu::Texture> planes;
    gpu::Texture rgb;
    gpu::Framebuffer target;  ///< draws into `rgb`
  };
  explicit PictureTexture(gpu::Pipeline convert);

  static std::expected<Storage, gpu::GpuError> allocate(const gpu::Device& device,
                                                        const media::VideoFrame& frame);
  bool storageFits(const media::VideoFrame& frame) const;
  void upload(const media::VideoFrame& frame, const gpu::PixelRect& part);

  gpu::Pipeline convert_;
  std::optional<Storage> storage_;
  std::optional<media::VideoFrame> frame_;
  bool mipsAreStale_ = false;
};

}  // namespace vesk::compositor
