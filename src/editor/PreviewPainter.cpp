#include "editor/PreviewPainter.h"

#include <algorithm>
#include <utility>

#include "package/Log.h"

namespace vesk::editor {
namespace {

using compositor::CompositeTarget;

void logFailure(const gpu::GpuError& error) {
  package::log(package::LogCategory::render).error("preview: {}", error.message);
}

}  // namespace

std::expected<std::unique_ptr<PreviewPainter>, gpu::GpuError> PreviewPainter::create(
    const gpu::Device& device) {
  auto renderer = compositor::PreviewRenderer::create(device);
  if (!renderer) return std::unexpected(renderer.error());
  return std::unique_ptr<PreviewPainter>(new PreviewPainter(device, std::move(*renderer)));
}

PreviewPainter::PreviewPainter(const gpu::Device& device,
                               std::unique_ptr<compositor::PreviewRenderer> renderer)
    : device_(device), renderer_(std::move(renderer)) {}

void PreviewPainter::take(const PreviewController& session, int width, int height) {
  isStale_ = true;
  width_ = width;
  height_ = height;
  if (project_ != session.project()) {
    project_ = session.project();
    if (project_) {
      renderer_->load(project_);
    } else {
      renderer_->unload();
    }
  }
  if (lookVersion_ != session.lookVersion()) {
    lookVersion_ = session.lookVersion();
    renderer_->settings = session.look();
  }
  renderer_->isPlaying = session.isPlaying();
  renderer_->currentTime = session.currentTime();
  screen_ = session.screenPicture();
  // What is not drawn need not be decoded.
  camera_ = renderer_->settings.pip.enabled ? session.cameraPicture() : std::nullopt;
}

const gpu::Texture* PreviewPainter::fitTexture() {
  const int longest = device_.capabilities().maxTextureSize;
  const int width = std::clamp(width_, 1, longest);
  const int height = std::clamp(height_, 1, longest);
  if (target_ && target_->texture().width() == width && target_->texture().height() == height) {
    return &target_->texture();
  }
  // Whoever shows the old texture does so until it has the new one.
  auto target = CompositeTarget::create(device_, width, height);
  if (!target) {
    logFailure(target.error());
    target_.reset();
    return nullptr;
  }
  target_ = std::move(*target);
  return &target_->texture();
}

compositor::PictureChanges PreviewPainter::showPictures() {
  compositor::PictureChanges changes;
  // A picture that has not come, or cannot be shown, leaves the one before.
  if (screen_) {
    if (const auto changed = renderer_->showScreen(*screen_)) {
      changes.screen = *changed;
    } else {
      logFailure(changed.error());
    }
  }
  if (camera_) {
    if (const auto changed = renderer_->showCamera(*camera_)) {
      changes.camera = *changed;
    } else {
      logFailure(changed.error());
    }
  }
  return changes;
}

void PreviewPainter::draw() {
  if (!target_ || !std::exchange(isStale_, false)) return;
  const gpu::Texture& canvas = target_->texture();
  const compositor::PictureChanges changes = showPictures();
  target_->draw(*renderer_, renderer_->previewPlan(canvas.width(), canvas.height()), changes,
                compositor::PreviewRenderer::previewClearColor, CompositeTarget::Redraw::changed);
}

}  // namespace vesk::editor
