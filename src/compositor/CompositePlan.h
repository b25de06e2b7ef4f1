#pragma once

#include <optional>
#include <vector>

#include "compositor/CompositeSettings.h"
#include "compositor/FrameLayout.h"
#include "compositor/UniformRecords.h"
#include "gpu/PixelRect.h"
#include "motion/CursorTrack.h"
#include "package/RecordingProject.h"

namespace vesk::compositor {

/// What one composite will draw, as values: the same plan over the same pictures gives the same
/// pixels. An absent part is not drawn.
struct CompositePlan {
  struct Frame {
    FrameUniforms uniforms;
    FrameSampling sampling;
    bool isMinified = false;  ///< somewhere a pixel covers more than one texel
    gpu::PixelRect interior;  ///< pixels that lie wholly inside the content rectangle
    bool operator==(const Frame&) const = default;
  };

  int width = 0;   ///< canvas, pixels
  int height = 0;  ///< canvas, pixels
  std::optional<BackdropUniforms> backdrop;
  std::optional<Frame> frame;
  std::vector<RippleInstance> ripples;
  std::optional<CursorUniforms> cursor;
  std::optional<PiPUniforms> camera;
  bool operator==(const CompositePlan&) const = default;
};

/// What a composite is made of. The pointers may be null: without a recording there is neither
/// ripple nor cursor.
struct CompositeScene {
  const CompositeSettings& settings;
  const package::RecordingProject* project = nullptr;
  const motion::CursorTrack* cursorTrack = nullptr;
  int pictureWidth = 0;                ///< of the screen picture in pixels
  int pictureHeight = 0;               ///< of the screen picture in pixels
  std::optional<double> cameraAspect;  ///< width over height of a camera picture to show
};

/// Works out one composite in drawing order: backdrop, frame, ripples, cursor, camera.
/// @param time seconds on the recording's clock.
/// @param width, height the canvas in pixels.
CompositePlan planComposite(const CompositeScene& scene, const motion::CameraPose& pose,
                            const motion::CameraPose& previousPose, double time,
                            const ContentRect& rect, int width, int height);

/// The most taps that motion blur takes along the motion of one pixel.
inline constexpr int maxBlurTaps = 32;

/// Taps for the largest screen motion, in pixels, of the picture's corners between two matrices,
/// shortened by the blur amount: 1, which is no blur, below half a pixel.
int blurTaps(const FrameUniforms& uniforms);

}  // namespace vesk::compositor
