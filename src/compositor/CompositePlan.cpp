#include "compositor/CompositePlan.h"

#include <algorithm>
#include <array>
#include <cmath>

#include "compositor/CameraOverlay.h"
#include "compositor/CursorOverlay.h"
#include "compositor/RippleOverlay.h"

namespace vesk::compositor {
namespace {

constexpr std::array<glm::vec4, 4> planeCorners{
    glm::vec4{-0.5F, 0.5F, 0, 1}, glm::vec4{0.5F, 0.5F, 0, 1}, glm::vec4{0.5F, -0.5F, 0, 1},
    glm::vec4{-0.5F, -0.5F, 0, 1}};
constexpr float smallestW = 1e-6F;

BackdropUniforms backdropUniforms(const package::FrameStyle& style, const ContentRect& rect,
                                  float canvasAspect) {
  return {
      .colorA = style.colorA,
      .colorB = style.colorB,
      .rect = {rect.origin, rect.size},
      .cornerRadius = static_cast<float>(style.cornerRadius),
      .shadow = static_cast<float>(style.shadow),
      .aspect = canvasAspect,
      .isGradient = style.background == package::FrameStyle::Background::gradient ? 1.0F : 0.0F};
}

// Texels a pixel covers at a point of the plane, along the canvas's axis where they are most.
float texelsPerPixel(const FrameUniforms& uniforms, glm::vec4 planePoint, glm::vec2 texels) {
  const glm::mat4& m = uniforms.mvp;
  const glm::vec4 clip = m * planePoint;
  if (clip.w < smallestW) return 1;
  const glm::vec2 ndc = glm::vec2(clip) / clip.w;
  const glm::vec2 halfCanvas(uniforms.canvasWidth / 2, uniforms.canvasHeight / 2);
  const glm::vec2 alongX = (glm::vec2(m[0]) - ndc * m[0].w) / clip.w * halfCanvas / texels.x;
  const glm::vec2 alongY = (glm::vec2(m[1]) - ndc * m[1].w) / clip.w * halfCanvas / texels.y;
  const float determinant = std::abs(alongX.x * alongY.y - alongX.y * alongY.x);
  if (determinant < 1e-12F) return std::max(texels.x, texels.y);
  const float perPixelX = std::hypot(alongY.y, alongX.y) / determinant;
  const float perPixelY = std::hypot(alongY.x, alongX.x) / determinant;
  return std::max(perPixelX, perPixelY);
}

// Mips are looked at only where the picture is made smaller; the density of texels is a projective
// function of the place, so that its largest value over the visible part lies at a corner.
bool isMinified(const FrameUniforms& uniforms, glm::vec2 texels) {
  // Rounding of the matrix must not turn a picture shown at its own size into a minified one.
  constexpr float tolerance = 1.001F;
  return std::ranges::any_of(planeCorners, [&](const glm::vec4& corner) {
    return texelsPerPixel(uniforms, corner, texels) > tolerance;
  });
}

// A little inside the rounded rectangle, whose corners cut off a share of the radius.
gpu::PixelRect interior(const FrameUniforms& uniforms) {
  constexpr double cornerShare = 0.3;  // 1 − 1/√2, rounded up
  const glm::dvec2 canvas(uniforms.canvasWidth, uniforms.canvasHeight);
  const glm::dvec2 low = glm::dvec2(uniforms.rectX, uniforms.rectY) * canvas;
  const glm::dvec2 high = low + glm::dvec2(uniforms.rectW, uniforms.rectH) * canvas;
  const double radius = static_cast<double>(uniforms.cornerRadius) * (high.y - low.y);
  // Half a pixel is what an edge between two pixels still touches of them.
  const double inset = radius > 0 ? radius * cornerShare + 1 : 0.0;
  const glm::dvec2 first = glm::clamp(glm::ceil(low + inset - 1e-3), glm::dvec2(0), canvas);
  const glm::dvec2 last = glm::clamp(glm::floor(high - inset + 1e-3), first, canvas);
  return {static_cast<int>(first.x), static_cast<int>(first.y), static_cast<int>(last.x - first.x),
          static_cast<int>(last.y - first.y)};
}

std::optional<CompositePlan::Frame> planFrame(const CompositeScene& scene,
                                              const package::RecordingMeta* meta,
                                              const std::optional<glm::mat4>& matrix,
                                              const motion::CameraPose& pose,
                                              const motion::CameraPose& previousPose, double time,
                                              const ContentRect& rect, int width, int height) {
  if (!matrix) return std::nullopt;
  const CompositeSettings& settings = scene.settings;
  const double aspect = width / std::max(static_cast<double>(height), 1.0);
  const FrameUniforms uniforms{
      .mvp = *matrix,
      .prevMVP = previousPose == pose
                     ? *matrix
                     : frameMatrix(meta, previousPose, rect, aspect).value_or(*matrix),
      .blur = settings.motionBlurEnabled
                  ? static_cast<float>(pose.motionBlur * settings.motionBlurStrength)
                  : 0.0F,
      .cornerRadius =
          settings.frameStyle.enabled ? static_cast<float>(settings.frameStyle.cornerRadius) : 0.0F,
      .aspect = static_cast<float>(aspect),
      .rectX = rect.origin.x,
      .rectY = rect.origin.y,
      .rectW = rect.size.x,
      .rectH = rect.size.y,
      .canvasWidth = static_cast<float>(width),
      .canvasHeight = static_cast<float>(height)};
  FrameSampling sampling{.taps = blurTaps(uniforms)};
  if (sampling.taps > 1) {
    // The jitter changes from frame to frame, so that its grain does not stand still.
    constexpr double jitterRate = 60;
    sampling.frameIndex =
        static_cast<std::uint32_t>(std::llround(std::max(time, 0.0) * jitterRate));
  }
  const glm::vec2 texels(std::max(scene.pictureWidth, 1), std::max(scene.pictureHeight, 1));
  return CompositePlan::Frame{.uniforms = uniforms,
                              .sampling = sampling,
                              .isMinified = isMinified(uniforms, texels),
                              .interior = interior(uniforms)};
}

}  // namespace

int blurTaps(const FrameUniforms& uniforms) {
  if (!(uniforms.blur > 0)) return 1;
  const glm::vec2 halfCanvas(uniforms.canvasWidth / 2, uniforms.canvasHeight / 2);
  float longest = 0;
  for (const glm::vec4& corner : planeCorners) {
    const glm::vec4 now = uniforms.mvp * corner;
    const glm::vec4 before = uniforms.prevMVP * corner;
    // A corner behind the camera has no place on the screen; the picture then moves more than
    // taps can follow.
    if (now.w < smallestW || before.w < smallestW) return maxBlurTaps;
    const glm::vec2 motion =
        (glm::vec2(now) / now.w - glm::vec2(before) / before.w) * halfCanvas * uniforms.blur;
    longest = std::max(longest, std::hypot(motion.x, motion.y));
  }
  constexpr float seenMotion = 0.5F;
  if (!(longest >= seenMotion)) return 1;
  // Two pixels from tap to tap: with linear filtering and the jitter no step shows.
  constexpr float spacing = 2;
  return static_cast<int>(
      std::clamp(std::ceil(longest / spacing) + 1, 2.0F, static_cast<float>(maxBlurTaps)));
}

CompositePlan planComposite(const CompositeScene& scene, const motion::CameraPose& pose,
                            const motion::CameraPose& previousPose, double time,
                            const ContentRect& rect, int width, int height) {
  const CompositeSettings& settings = scene.settings;
  const package::RecordingMeta* meta = scene.project != nullptr ? &scene.project->meta : nullptr;
  const double aspect = width / std::max(static_cast<double>(height), 1.0);
  const std::optional<glm::mat4> matrix = frameMatrix(meta, pose, rect, aspect);

  CompositePlan plan{.width = width, .height = height};
  if (settings.frameStyle.enabled) {
    plan.backdrop = backdropUniforms(settings.frameStyle, rect, static_cast<float>(aspect));
  }
  plan.frame = planFrame(scene, meta, matrix, pose, previousPose, time, rect, width, height);
  if (scene.project != nullptr && matrix) {
    if (settings.rippleSettings.enabled) {
      plan.ripples = rippleInstances(settings.rippleSettings, scene.project->clicks, *matrix,
                                     pose.framing, time, rect, aspect);
    }
    if (scene.cursorTrack != nullptr) {
      plan.cursor = cursorUniforms(settings.cursorSettings, *meta, *scene.cursorTrack, *matrix,
                                   pose.framing, time, rect);
    }
  }
  if (settings.pip.enabled && scene.cameraAspect) {
    plan.camera = pipUniforms(settings.pip, *scene.cameraAspect, width, height);
  }
  return plan;
}

}  // namespace vesk::compositor
