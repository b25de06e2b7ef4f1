#pragma once

#include <array>
#include <expected>
#include <memory>
#include <optional>
#include <vector>

#include "compositor/CompositeDamage.h"
#include "gpu/Device.h"
#include "gpu/Framebuffer.h"
#include "gpu/Pipeline.h"
#include "gpu/RenderPass.h"
#include "media/I420Picture.h"
#include "media/PicturePool.h"

namespace vesk::compositor {

/// Brings the composites of one canvas from the graphics processor into planes for an encoder.
class PictureDownload {
 public:
  /// Where the pixels become planes. The result is the same but for rounding.
  enum class Conversion {
    onProcessor,  ///< after the read-back: faster where the processor draws as well
    onGraphics,   ///< before it: less than half the bytes come back
  };
  static Conversion preferredConversion(const gpu::Device& device);

  /// @param width, height of the canvas in pixels, even.
  static std::expected<PictureDownload, gpu::GpuError> create(const gpu::Device& device, int width,
                                                              int height, Conversion conversion);

  /// The canvas as planes. What was given out before stays as it is; a canvas without damage gives
  /// the same picture again.
  /// @param canvas the texture that `framebuffer` draws into.
  /// @param damage the area outside which the canvas equals that of the call before.
  std::shared_ptr<const media::I420Picture> download(const gpu::Texture& canvas,
                                                     const gpu::Framebuffer& framebuffer,
                                                     const CompositeDamage& damage,
                                                     gpu::UniformBuffers& uniforms);

 private:
  struct PlaneTarget {
    gpu::Texture texture;
    gpu::Framebuffer framebuffer;  ///< draws into `texture`
  };
  /// What only the conversion on the graphics processor needs.
  struct Graphics {
    gpu::Pipeline pipeline;
    std::vector<PlaneTarget> planes;  ///< Y, Cb, Cr
  };

  PictureDownload(int width, int height, std::optional<Graphics> graphics);
  static std::expected<Graphics, gpu::GpuError> createGraphics(const gpu::Device& device, int width,
                                                               int height);

  void readPixels(const gpu::Framebuffer& framebuffer, const gpu::PixelRect& part,
                  media::I420Picture& picture);
  void readPlanes(const gpu::Texture& canvas, const gpu::PixelRect& part,
                  media::I420Picture& picture, gpu::UniformBuffers& uniforms);

  std::optional<Graphics> graphics_;
  media::PicturePool pool_;
  std::vector<std::byte> pixels_;  ///< the canvas as BGRA, for the conversion on the processor
  int width_;
  int height_;
  std::shared_ptr<const media::I420Picture> last_;
};

}  // namespace vesk::compositor
