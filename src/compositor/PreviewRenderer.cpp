#include "compositor/PreviewRenderer.h"

#include <algorithm>
#include <span>
#include <string_view>
#include <utility>

#include "compositor/CameraClock.h"
#include "compositor/CameraOverlay.h"
#include "compositor/CursorImage.h"
#include "compositor/RippleOverlay.h"
#include "package/Log.h"
#include "vesk_compositor_shaders.h"

namespace vesk::compositor {
namespace {

using gpu::Pipeline;

constexpr double previewStep = 1.0 / 60;

}  // namespace

std::expected<PreviewRenderer::Pipelines, gpu::GpuError> PreviewRenderer::buildPipelines() {
  std::optional<gpu::GpuError> failure;
  const auto build = [&](std::string_view vertex, std::string_view fragment,
                         Pipeline::Blending blending) -> std::optional<Pipeline> {
    auto pipeline = Pipeline::create(vertex, fragment, blending);
    if (pipeline) return std::move(*pipeline);
    failure = pipeline.error();
    return std::nullopt;
  };
  constexpr auto over = Pipeline::Blending::over;
  constexpr auto opaque = Pipeline::Blending::off;
  auto backdrop = build(shaders::backdropVertex, shaders::backdropFragment, opaque);
  auto frame = build(shaders::frameVertex, shaders::frameEdgeFragment, over);
  auto frameInterior = build(shaders::frameVertex, shaders::frameFragment, opaque);
  auto frameBlurred = build(shaders::frameBlurredVertex, shaders::frameBlurredEdgeFragment, over);
  auto frameBlurredInterior =
      build(shaders::frameBlurredVertex, shaders::frameBlurredFragment, opaque);
  auto ripple = build(shaders::rippleVertex, shaders::rippleFragment, over);
  auto cursor = build(shaders::cursorVertex, shaders::cursorFragment, over);
  auto pip = build(shaders::pipVertex, shaders::pipFragment, over);
  if (failure) {
    package::log(package::LogCategory::render)
        .error("创建 pipeline state 失败：{}", failure->message);
    return std::unexpected(*failure);
  }
  return Pipelines{.backdrop = *std::move(backdrop),
                   .frame = *std::move(frame),
                   .frameInterior = *std::move(frameInterior),
                   .frameBlurred = *std::move(frameBlurred),
                   .frameBlurredInterior = *std::move(frameBlurredInterior),
                   .ripple = *std::move(ripple),
                   .cursor = *std::move(cursor),
                   .pip = *std::move(pip)};
}

std::expected<std::unique_ptr<PreviewRenderer>, gpu::GpuError> PreviewRenderer::create(
    const gpu::Device& device) {
  auto pipelines = buildPipelines();
  if (!pipelines) return std::unexpected(pipelines.error());
  auto screen = PictureTexture::create();
  if (!screen) return std::unexpected(screen.error());
  auto camera = PictureTexture::create();
  if (!camera) return std::unexpected(camera.error());
  std::unique_ptr<PreviewRenderer> renderer(
      new PreviewRenderer(device, std::move(*pipelines), std::move(*screen), std::move(*camera)));
  renderer->rebuildCursorTexture();
  return renderer;
}

PreviewRenderer::PreviewRenderer(const gpu::Device& device, Pipelines pipelines,
                                 PictureTexture screen, PictureTexture camera)
    : device_(device),
      pipelines_(std::move(pipelines)),
      screen_(std::move(screen)),
      camera_(std::move(camera)) {}

void PreviewRenderer::bind(std::shared_ptr<const package::RecordingProject> project) {
  project_ = std::move(project);
  cursorTrack_ = motion::CursorTrack(*project_);
  cameraOffset_ = cameraOffset(project_->meta);
  forgetPictures();
}

void PreviewRenderer::forgetPictures() {
  cameraReader_.reset();
  cameraVisibleFrom_ = 0;
  screen_.clear();
  camera_.clear();
}

void PreviewRenderer::load(std::shared_ptr<const package::RecordingProject> project) {
  bind(std::move(project));
  package::log(package::LogCategory::render)
      .info("renderer loaded {} clicks={}", project_->url.filename().string(),
            project_->clicks.size());
}

void PreviewRenderer::unload() {
  project_.reset();
  cursorTrack_ = {};
  forgetPictures();
}

void PreviewRenderer::loadForExport(std::shared_ptr<const package::RecordingProject> project) {
  bind(std::move(project));
  cameraVisibleFrom_ = cameraVisibleFrom(project_->meta);
  if (const auto camera = project_->cameraURL()) cameraReader_.emplace(*camera);
}

std::expected<std::unique_ptr<PreviewRenderer>, gpu::GpuError> PreviewRenderer::exportClone(
    const gpu::Device& device, std::shared_ptr<const package::RecordingProject> project) const {
  return createForExport(device, settings, std::move(project));
}

std::expected<std::unique_ptr<PreviewRenderer>, gpu::GpuError> PreviewRenderer::createForExport(
    const gpu::Device& device, CompositeSettings settings,
    std::shared_ptr<const package::RecordingProject> project) {
  auto clone = create(device);
  if (!clone) return clone;
  (*clone)->settings = std::move(settings);
  (*clone)->loadForExport(std::move(project));
  return clone;
}

ContentRect PreviewRenderer::contentRect(double width, double height) const {
  return compositor::contentRect(project_ ? &project_->meta : nullptr, settings.frameStyle, width,
                                 height);
}

motion::CameraPose PreviewRenderer::previousPose(const motion::CameraPose& pose) const {
  if (!settings.motionBlurEnabled || !isPlaying || !settings.followsTrack()) return pose;
  return settings.cameraTrack->sample(std::max(currentTime - previewStep, 0.0));
}

std::expected<gpu::PixelRect, gpu::GpuError> PreviewRenderer::showScreen(
    const media::VideoFrame& frame) {
  return screen_.show(device_, frame, uniforms_);
}

std::expected<bool, gpu::GpuError> PreviewRenderer::showCamera(const media::VideoFrame& frame) {
  const auto changed = camera_.show(device_, frame, uniforms_);
  if (!changed) return std::unexpected(changed.error());
  return !changed->isEmpty();
}

double PreviewRenderer::cameraTime(double time) const {
  return compositor::cameraTime(time, cameraOffset_);
}

bool PreviewRenderer::showsCameraAt(double time) const {
  return settings.pip.enabled && cameraVisibleFrom_ <= time;
}

bool PreviewRenderer::advanceCamera(double time) {
  // Nothing is read for a window that is not drawn.
  if (!cameraReader_ || !showsCameraAt(time)) return false;
  const std::optional<media::VideoFrame>& frame = cameraReader_->frame(cameraTime(time));
  if (!frame) return false;
  const auto changed = showCamera(*frame);
  if (!changed) {
    package::log(package::LogCategory::render).error("camera: {}", changed.error().message);
  }
  return changed.value_or(false);
}

CompositePlan PreviewRenderer::plan(const motion::CameraPose& pose,
                                    const motion::CameraPose& previousPose, double time,
                                    const ContentRect& rect, int width, int height) const {
  CompositeScene scene{.settings = settings,
                       .project = project_.get(),
                       .cursorTrack = &cursorTrack_,
                       .pictureWidth = screen_.width(),
                       .pictureHeight = screen_.height(),
                       .cameraAspect = std::nullopt};
  if (!camera_.isEmpty() && showsCameraAt(time)) {
    scene.cameraAspect = cameraAspect(camera_.width(), camera_.height());
  }
  return planComposite(scene, pose, previousPose, time, rect, width, height);
}

void PreviewRenderer::encodeComposite(gpu::RenderPass& pass, const CompositePlan& plan) {
  if (plan.backdrop) drawBackdrop(pass, *plan.backdrop);
  if (plan.frame && hasScreen()) drawFrame(pass, plan);
  if (!plan.ripples.empty()) drawRipples(pass, plan.ripples);
  if (plan.cursor) drawCursor(pass, *plan.cursor);
  if (plan.camera) drawCamera(pass, *plan.camera);
}

CompositePlan PreviewRenderer::previewPlan(int width, int height) const {
  const motion::CameraPose now = currentPose();
  CompositePlan composite =
      plan(now, previousPose(now), currentTime, contentRect(width, height), width, height);
  if (!hasScreen()) {
    // The frame's background stands before the first picture has come.
    composite.frame.reset();
    composite.ripples.clear();
    composite.cursor.reset();
    composite.camera.reset();
  }
  return composite;
}

void PreviewRenderer::draw(const gpu::Framebuffer& target) {
  gpu::RenderPass pass(target, uniforms_, target.bounds(), previewClearColor);
  encodeComposite(pass, previewPlan(target.width(), target.height()));
}

void PreviewRenderer::rebuildCursorTexture() {
  const package::CursorStyle style = settings.cursorSettings.style;
  spdlog::logger& log = package::log(package::LogCategory::render);
  const auto image = drawCursorImage(style);
  if (!image) {
    log.error("光标位图绘制失败，将不绘制光标");
    cursorStyle_ = style;
    return;
  }
  auto texture = gpu::Texture::create(device_, image->width, image->height, gpu::PixelFormat::bgra8,
                                      gpu::Texture::Mips::full);
  cursorStyle_ = style;
  cursorTexture_.reset();
  if (!texture) {
    log.error("光标纹理创建失败");
    return;
  }
  texture->upload(image->pixels.data(), image->stride(), texture->bounds());
  texture->generateMips();
  cursorTexture_ = std::move(*texture);
}

void PreviewRenderer::drawBackdrop(gpu::RenderPass& pass, const BackdropUniforms& backdrop) {
  pass.draw(pipelines_.backdrop, gpu::recordBytes(backdrop), {}, {});
}

// Inside the content rectangle the picture is opaque. Drawing that part without blending and
// coverage gives the same pixels, on a software renderer in a fifth of the time.
void PreviewRenderer::drawFrame(gpu::RenderPass& pass, const CompositePlan& plan) {
  const CompositePlan::Frame& frame = *plan.frame;
  const bool blurred = frame.sampling.taps > 1;
  const Pipeline& edge = blurred ? pipelines_.frameBlurred : pipelines_.frame;
  const Pipeline& interior = blurred ? pipelines_.frameBlurredInterior : pipelines_.frameInterior;
  const auto levels =
      frame.isMinified ? gpu::TextureBinding::Levels::all : gpu::TextureBinding::Levels::first;
  const gpu::Texture& texture = screen_.texture(levels);
  const auto drawPart = [&](const Pipeline& pipeline, const gpu::PixelRect& part) {
    if (part.isEmpty()) return;
    pass.restrictTo(part);
    pass.draw(pipeline, gpu::recordBytes(frame.uniforms), gpu::recordBytes(frame.sampling),
              {{texture, levels}});
  };
  const gpu::PixelRect& inner = frame.interior;
  const gpu::PixelRect canvas{0, 0, plan.width, plan.height};
  drawPart(interior, inner);
  drawPart(edge, {0, 0, canvas.width, inner.y});
  drawPart(edge, {0, inner.bottom(), canvas.width, canvas.height - inner.bottom()});
  drawPart(edge, {0, inner.y, inner.x, inner.height});
  drawPart(edge, {inner.right(), inner.y, canvas.width - inner.right(), inner.height});
  pass.restrictTo(canvas);
}

void PreviewRenderer::drawRipples(gpu::RenderPass& pass,
                                  const std::vector<RippleInstance>& ripples) {
  // The block in the shader has a fixed length, and what is bound must be as long.
  std::array<RippleInstance, maxRipples> block{};
  std::ranges::copy(ripples, block.begin());
  pass.draw(pipelines_.ripple, gpu::recordBytes(block), {}, {}, static_cast<int>(ripples.size()));
}

void PreviewRenderer::drawCursor(gpu::RenderPass& pass, const CursorUniforms& cursor) {
  if (cursorStyle_ != settings.cursorSettings.style) rebuildCursorTexture();
  if (!cursorTexture_) return;
  pass.draw(pipelines_.cursor, gpu::recordBytes(cursor), {},
            {{*cursorTexture_, gpu::TextureBinding::Levels::all}});
}

void PreviewRenderer::drawCamera(gpu::RenderPass& pass, const PiPUniforms& camera) {
  pass.draw(
      pipelines_.pip, gpu::recordBytes(camera), {},
      {{camera_.texture(gpu::TextureBinding::Levels::all), gpu::TextureBinding::Levels::all}});
}

}  // namespace vesk::compositor
