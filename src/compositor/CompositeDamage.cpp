#include "compositor/CompositeDamage.h"

#include <algorithm>
#include <array>
#include <cmath>
#include <limits>
#include <optional>

#include "motion/CameraPose.h"

namespace vesk::compositor {
namespace {

using gpu::PixelRect;

// Beyond this share of the canvas a few rectangles cost as much as the whole.
constexpr double worthwhileShare = 0.6;

// The whole pixels that a box of canvas fractions touches, with one more around for soft edges.
PixelRect pixelBounds(glm::dvec2 low, glm::dvec2 high, const CompositePlan& plan) {
  constexpr double softEdge = 1;
  const glm::dvec2 canvas(plan.width, plan.height);
  const glm::dvec2 first = glm::clamp(glm::floor(low * canvas) - softEdge, glm::dvec2(0), canvas);
  const glm::dvec2 last = glm::clamp(glm::ceil(high * canvas) + softEdge, glm::dvec2(0), canvas);
  return {static_cast<int>(first.x), static_cast<int>(first.y), static_cast<int>(last.x - first.x),
          static_cast<int>(last.y - first.y)};
}

PixelRect bounds(const CursorUniforms& cursor, const CompositePlan& plan) {
  return pixelBounds(cursor.origin, cursor.origin + cursor.size, plan);
}

PixelRect bounds(const RippleInstance& ripple, const CompositePlan& plan) {
  // The quad reaches a little over the final radius, see the vertex shader.
  constexpr double margin = 1.2;
  const double aspect = ripple.aspect.y;
  const glm::dvec2 radius = ripple.maxRadius * margin * glm::dvec2(1 / aspect, 1);
  return pixelBounds(glm::dvec2(ripple.center) - radius, glm::dvec2(ripple.center) + radius, plan);
}

PixelRect bounds(const PiPUniforms& camera, const CompositePlan& plan) {
  // Window heights beyond the window that the vertex shader gives to the edge and the shadow.
  const double room = camera.shadow > 0 ? 0.18 : 0.01;
  const glm::dvec2 reach =
      glm::dvec2(camera.halfSize) +
      2.0 * camera.halfSize.y * room * glm::dvec2(1 / static_cast<double>(camera.aspect), 1);
  return pixelBounds(glm::dvec2(camera.center) - reach, glm::dvec2(camera.center) + reach, plan);
}

// Disjoint rectangles: one that meets others grows over them.
class RectUnion {
 public:
  void add(PixelRect rect) {
    if (rect.isEmpty()) return;
    const auto meets = [&](const PixelRect& other) { return !other.intersection(rect).isEmpty(); };
    for (auto met = std::ranges::find_if(rects_, meets); met != rects_.end();
         met = std::ranges::find_if(rects_, meets)) {
      rect = rect.united(*met);
      rects_.erase(met);
    }
    rects_.push_back(rect);
  }

  template <typename Overlay>
  void addBoth(const std::optional<Overlay>& before, const CompositePlan& planBefore,
               const std::optional<Overlay>& now, const CompositePlan& planNow) {
    if (before) add(bounds(*before, planBefore));
    if (now) add(bounds(*now, planNow));
  }

  std::vector<PixelRect> take() { return std::move(rects_); }

 private:
  std::vector<PixelRect> rects_;
};

// Without blur a frame depends on its own matrix alone, whatever came before it.
bool showSameFrame(const std::optional<CompositePlan::Frame>& before,
                   const std::optional<CompositePlan::Frame>& now) {
  if (!before || !now) return before.has_value() == now.has_value();
  const auto still = [](CompositePlan::Frame frame) {
    frame.uniforms.prevMVP = frame.uniforms.mvp;
    frame.uniforms.blur = 0;
    return frame;
  };
  if (before->sampling.taps > 1 || now->sampling.taps > 1) return *before == *now;
  return still(*before) == still(*now);
}

// Where a part of the picture lies on the canvas; nothing when that cannot be told from its
// corners.
std::optional<PixelRect> placeOnCanvas(const PixelRect& part, const CompositePlan& plan,
                                       int pictureWidth, int pictureHeight) {
  if (!plan.frame || plan.frame->isMinified || plan.frame->sampling.taps > 1) {
    return std::nullopt;
  }
  // Linear filtering carries a texel as far as the centre of the next.
  constexpr double filterReach = 1;
  const glm::dvec2 picture(pictureWidth, pictureHeight);
  const glm::dvec2 low = (glm::dvec2(part.x, part.y) - filterReach) / picture;
  const glm::dvec2 high = (glm::dvec2(part.right(), part.bottom()) + filterReach) / picture;
  const std::array<glm::vec2, 4> corners{glm::vec2(low), glm::vec2(high.x, low.y), glm::vec2(high),
                                         glm::vec2(low.x, high.y)};
  constexpr double unbounded = std::numeric_limits<double>::infinity();
  glm::dvec2 first(unbounded);
  glm::dvec2 last(-unbounded);
  for (const glm::vec2& corner : corners) {
    const auto place = motion::project(corner, plan.frame->uniforms.mvp);
    if (!place) return std::nullopt;
    first = glm::min(first, glm::dvec2(*place));
    last = glm::max(last, glm::dvec2(*place));
  }
  return pixelBounds(first, last, plan);
}

}  // namespace

CompositeDamage compositeDamage(const CompositePlan& before, const CompositePlan& now,
                                const PictureChanges& changes, int pictureWidth,
                                int pictureHeight) {
  if (before.width != now.width || before.height != now.height || before.backdrop != now.backdrop ||
      !showSameFrame(before.frame, now.frame)) {
    return CompositeDamage{.isEverything = true};
  }
  RectUnion damaged;
  if (!changes.screen.isEmpty() && now.frame) {
    const auto place = placeOnCanvas(changes.screen, now, pictureWidth, pictureHeight);
    if (!place) return CompositeDamage{.isEverything = true};
    damaged.add(*place);
  }
  if (before.ripples != now.ripples) {
    for (const RippleInstance& ripple : before.ripples) damaged.add(bounds(ripple, before));
    for (const RippleInstance& ripple : now.ripples) damaged.add(bounds(ripple, now));
  }
  if (before.cursor != now.cursor) damaged.addBoth(before.cursor, before, now.cursor, now);
  if (before.camera != now.camera || (now.camera && changes.camera)) {
    damaged.addBoth(before.camera, before, now.camera, now);
  }
  std::vector<PixelRect> rects = damaged.take();
  double area = 0;
  for (const PixelRect& rect : rects) area += static_cast<double>(rect.width) * rect.height;
  if (area > worthwhileShare * now.width * now.height) return CompositeDamage{.isEverything = true};
  return {.isEverything = false, .rects = std::move(rects)};
}

}  // namespace vesk::compositor
