#pragma once

#include <array>
#include <expected>
#include <memory>
#include <optional>

#include "compositor/CameraFrameReader.h"
#include "compositor/CompositePlan.h"
#include "compositor/CompositeSettings.h"
#include "compositor/FrameLayout.h"
#include "compositor/PictureTexture.h"
#include "gpu/Device.h"
#include "gpu/RenderPass.h"
#include "media/VideoFrame.h"
#include "motion/CursorTrack.h"
#include "package/RecordingProject.h"

namespace vesk::compositor {

/// Turns one clean screen picture plus the settings into the finished picture: the one place where
/// that happens, for the preview and, through a clone, for an export.
///
/// Works in the OpenGL context that is current where it is called, the same one all its life, and
/// owns neither window nor context. `settings`, `isPlaying` and `currentTime` may be written
/// between frames and take effect at the next one.
class PreviewRenderer {
 public:
  /// Builds the pipelines. Fails when the context cannot compile them.
  static std::expected<std::unique_ptr<PreviewRenderer>, gpu::GpuError> create(
      const gpu::Device& device);

  CompositeSettings settings;
  bool isPlaying = false;
  double currentTime = 0;  ///< seconds on the recording's clock

  /// Binds the renderer to a recording for the preview and forgets the pictures shown. The camera's
  /// pictures come through showCamera(), and its window shows from the first moment.
  void load(std::shared_ptr<const package::RecordingProject> project);

  /// Lets go of the recording and the pictures shown.
  void unload();

  /// A renderer on `device` with a copy of the settings, bound to `project`; it shares nothing
  /// mutable with this one. The device's context must be current.
  std::expected<std::unique_ptr<PreviewRenderer>, gpu::GpuError> exportClone(
      const gpu::Device& device, std::shared_ptr<const package::RecordingProject> project) const;

  /// The same for settings that were copied before: a clone for another thread than this
  /// renderer's.
  static std::expected<std::unique_ptr<PreviewRenderer>, gpu::GpuError> createForExport(
      const gpu::Device& device, CompositeSettings settings,
      std::shared_ptr<const package::RecordingProject> project);

  /// Binds a clone to a recording. The camera's pictures come through advanceCamera(), and its
  /// window stays hidden until they have light in them.
  void loadForExport(std::shared_ptr<const package::RecordingProject> project);

  const package::RecordingProject* project() const { return project_.get(); }

  /// Where the picture lies on a canvas of this size in pixels.
  ContentRect contentRect(double width, double height) const;

  motion::CameraPose pose(double time) const { return settings.pose(time); }
  motion::CameraPose currentPose() const { return pose(currentTime); }
  /// The pose that the preview compares with: 1/60 s earlier while playing along a track with
  /// motion blur, else `pose` itself, so that a still picture is sharp.
  motion::CameraPose previousPose(const motion::CameraPose& pose) const;

  /// Makes `frame` the screen picture.
  /// @return its pixels that differ from those shown before.
  std::expected<gpu::PixelRect, gpu::GpuError> showScreen(const media::VideoFrame& frame);

  /// Makes `frame` the camera's picture.
  /// @return whether it differs from the one shown before.
  std::expected<bool, gpu::GpuError> showCamera(const media::VideoFrame& frame);

  /// For a clone: reads on in "camera.mov" to the picture for `time`, which must not fall from call
  /// to call. A picture that cannot be had leaves the one before.
  /// @return whether the picture differs from the one shown before.
  bool advanceCamera(double time);

  /// The time in "camera.mov" that belongs to `time` on the recording's clock.
  double cameraTime(double time) const;

  bool hasScreen() const { return !screen_.isEmpty(); }
  int pictureWidth() const { return screen_.width(); }
  int pictureHeight() const { return screen_.height(); }

  /// What a composite at `time` will draw on a canvas of this size in pixels.
  CompositePlan plan(const motion::CameraPose& pose, const motion::CameraPose& previousPose,
                     double time, const ContentRect& rect, int width, int height) const;

  /// Draws a composite: backdrop, frame, ripples, cursor, camera. Preview and export both draw
  /// through this and nothing else.
  void encodeComposite(gpu::RenderPass& pass, const CompositePlan& plan);

  /// What the preview draws at `currentTime`: the composite, and before there is a picture the
  /// backdrop alone.
  CompositePlan previewPlan(int width, int height) const;

  /// The grey of the stage around the picture.
  static constexpr glm::vec4 previewClearColor{0.078F, 0.078F, 0.078F, 1.0F};

  /// Draws one frame of the preview, whole.
  void draw(const gpu::Framebuffer& target);

  gpu::UniformBuffers& uniformBuffers() { return uniforms_; }

 private:
  struct Pipelines {
    gpu::Pipeline backdrop;
    gpu::Pipeline frame;
    gpu::Pipeline frameInterior;
    gpu::Pipeline frameBlurred;
    gpu::Pipeline frameBlurredInterior;
    gpu::Pipeline ripple;
    gpu::Pipeline cursor;
    gpu::Pipeline pip;
  };
  PreviewRenderer(const gpu::Device& device, Pipelines pipelines, PictureTexture screen,
                  PictureTexture camera);
  static std::expected<Pipelines, gpu::GpuError> buildPipelines();

  void bind(std::shared_ptr<const package::RecordingProject> project);
  void forgetPictures();
  bool showsCameraAt(double time) const;
  void rebuildCursorTexture();
  void drawBackdrop(gpu::RenderPass& pass, const BackdropUniforms& backdrop);
  void drawFrame(gpu::RenderPass& pass, const CompositePlan& plan);
  void drawRipples(gpu::RenderPass& pass, const std::vector<RippleInstance>& ripples);
  void drawCursor(gpu::RenderPass& pass, const CursorUniforms& cursor);
  void drawCamera(gpu::RenderPass& pass, const PiPUniforms& camera);

  const gpu::Device& device_;
  Pipelines pipelines_;
  gpu::UniformBuffers uniforms_;
  PictureTexture screen_;
  PictureTexture camera_;
  std::optional<CameraFrameReader> cameraReader_;  ///< of a clone
  double cameraOffset_ = 0;                        ///< see CameraClock.h
  double cameraVisibleFrom_ = 0;                   ///< seconds on the recording's clock
  std::optional<gpu::Texture> cursorTexture_;      ///< nothing when it could not be made
  package::CursorStyle cursorStyle_ = package::CursorStyle::arrow;  ///< of cursorTexture_
  std::shared_ptr<const package::RecordingProject> project_;
  motion::CursorTrack cursorTrack_;
};

}  // namespace vesk::compositor
