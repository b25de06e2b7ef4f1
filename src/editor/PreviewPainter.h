#pragma once

#include <cstdint>
#include <expected>
#include <memory>
#include <optional>

#include "compositor/CompositeTarget.h"
#include "compositor/PreviewRenderer.h"
#include "editor/PreviewController.h"
#include "gpu/Device.h"
#include "media/VideoFrame.h"

namespace vesk::editor {

/// Draws what a session shows into a texture of its own. Lives on the thread of the graphics
/// context that is current where it is made; only take() also touches the session, whose thread
/// must stand still meanwhile.
class PreviewPainter {
 public:
  /// @param device outlives the painter.
  static std::expected<std::unique_ptr<PreviewPainter>, gpu::GpuError> create(
      const gpu::Device& device);

  /// Takes over what the session shows now, on a canvas of this size in pixels.
  void take(const PreviewController& session, int width, int height);

  /// The texture for the size that was taken, row 0 at the top; its pixels come with draw(). Null
  /// when there is not the memory for it. Valid until the size changes; the one for the new size
  /// has another handle.
  const gpu::Texture* fitTexture();

  /// Whether something was taken that is not drawn yet.
  bool isStale() const { return isStale_; }

  /// Brings the texture up to date with what was taken; does nothing when it is, or there is none.
  void draw();

  /// To read the finished frame back; null before there is a texture.
  const gpu::Framebuffer* framebuffer() const {
    return target_ ? &target_->framebuffer() : nullptr;
  }

 private:
  PreviewPainter(const gpu::Device& device, std::unique_ptr<compositor::PreviewRenderer> renderer);
  compositor::PictureChanges showPictures();

  const gpu::Device& device_;
  std::unique_ptr<compositor::PreviewRenderer> renderer_;
  std::optional<compositor::CompositeTarget> target_;
  std::shared_ptr<const package::RecordingProject> project_;
  std::optional<media::VideoFrame> screen_;
  std::optional<media::VideoFrame> camera_;
  std::optional<std::uint64_t> lookVersion_;
  int width_ = 0;
  int height_ = 0;
  bool isStale_ = false;
};

}  // namespace vesk::editor
