#include "compositor/ReferenceComposite.h"

#include <algorithm>
#include <cmath>
#include <glm/common.hpp>
#include <glm/geometric.hpp>
#include <glm/mat3x3.hpp>
#include <glm/matrix.hpp>
#include <glm/vec3.hpp>
#include <glm/vector_relational.hpp>
#include <optional>

namespace vesk::compositor::test {
namespace {

using glm::dvec2;
using glm::dvec3;
using glm::dvec4;

/// Distance from a rectangle around the origin whose corners are quarter circles.
double roundedDistance(dvec2 point, dvec2 halfSize, double radius) {
  const double corner = std::min({radius, halfSize.x, halfSize.y});
  const dvec2 fromInner = glm::abs(point) - (halfSize - corner);
  const bool besideTheCorner = fromInner.x > 0 && fromInner.y > 0;
  return (besideTheCorner ? glm::length(fromInner) : std::max(fromInner.x, fromInner.y)) - corner;
}

double covered(double signedPixels) {
  return std::clamp(0.5 - signedPixels, 0.0, 1.0);
}

/// A shadow that is half dark on the edge of what casts it and ends `reach` outside.
double shadowAt(double distance, double reach) {
  const double outwards = std::clamp((distance + reach) / (2 * reach), 0.0, 1.0);
  return 1 - outwards * outwards * (3 - 2 * outwards);
}

/// Threshold of a pixel in a Bayer matrix of 8 × 8, by the matrix's own recursion: each doubling
/// puts the pattern (0 2 / 3 1) inside the coarser one.
double bayer(unsigned x, unsigned y) {
  double rank = 0;
  double weight = 16;
  for (int level = 0; level < 3; ++level) {
    const double pattern[2][2] = {{0, 2}, {3, 1}};  // NOLINT: the matrix as it is printed
    rank += weight * pattern[y & 1U][x & 1U];
    weight /= 4;
    x /= 2;
    y /= 2;
  }
  return (rank + 0.5) / 64;
}

/// Lays a draw over an image. `shade` gives the straight colour of the pixel around a place, or
/// nothing where the draw does not reach.
template <typename Shade>
void drawOver(DoubleImage& image, Shade shade) {
  for (int y = 0; y < image.height; ++y) {
    for (int x = 0; x < image.width; ++x) {
      const std::optional<dvec4> source = shade(dvec2(x + 0.5, y + 0.5));
      if (!source) continue;
      dvec4& pixel = image.at(x, y);
      pixel = inEightBits(*source * source->a + pixel * (1 - source->a));
    }
  }
}

dvec4 backdropColor(const BackdropUniforms& backdrop, dvec2 pixel, dvec2 canvas) {
  const dvec2 place = pixel / canvas;
  const double along = backdrop.isGradient != 0 ? (place.x + place.y) / 2 : 0;
  const dvec3 base = glm::mix(dvec3(backdrop.colorA), dvec3(backdrop.colorB), along);

  // Everything below in canvas heights.
  const dvec2 stretch(canvas.x / canvas.y, 1);
  const dvec2 size = dvec2(backdrop.rect.z, backdrop.rect.w) * stretch;
  const dvec2 center = dvec2(backdrop.rect.x, backdrop.rect.y) * stretch + size / 2.0;
  const dvec2 fall(0, 0.022);
  const double distance = roundedDistance(place * stretch - center - fall, size / 2.0,
                                          backdrop.cornerRadius * backdrop.rect.w);
  const dvec3 shaded = base * (1 - backdrop.shadow * shadowAt(distance, 0.075));
  // A plain area needs no dither: its colour is as exact as it can be.
  if (backdrop.isGradient == 0 && shaded == base) return {base, 1};
  const double dither = bayer(static_cast<unsigned>(pixel.x), static_cast<unsigned>(pixel.y)) - 0.5;
  return {shaded + dither / 255, 1};
}

/// The picture on its plane, seen through the frame's matrix.
class FrameDraw {
 public:
  FrameDraw(const CompositePlan::Frame& frame, const ReferencePicture& picture)
      : uniforms_(frame.uniforms),
        sampling_(frame.sampling),
        picture_(picture),
        canvas_(frame.uniforms.canvasWidth, frame.uniforms.canvasHeight),
        toPlane_(glm::inverse(ofThePlane(frame.uniforms.mvp))),
        toPlaneBefore_(glm::inverse(ofThePlane(frame.uniforms.prevMVP))) {}

  std::optional<dvec4> operator()(dvec2 pixel) const {
    const std::optional<dvec2> place = pictureAt(pixel, toPlane_);
    if (!place || glm::any(glm::lessThan(*place, dvec2(0))) ||
        glm::any(glm::greaterThan(*place, dvec2(1)))) {
      return std::nullopt;
    }
    return dvec4(color(pixel, *place), coverage(pixel));
  }

 private:
  /// The part of a matrix that acts on points (x, y, 0, 1), giving (x, y, w).
  static glm::dmat3 ofThePlane(const glm::mat4& matrix) {
    const auto column = [&](int index) {
      return dvec3(matrix[index].x, matrix[index].y, matrix[index].w);
    };
    return {column(0), column(1), column(3)};
  }

  /// The place of the picture that stands at a pixel.
  std::optional<dvec2> pictureAt(dvec2 pixel, const glm::dmat3& toPlane) const {
    const dvec2 clip = pixel / canvas_ * 2.0 - 1.0;
    const dvec3 plane = toPlane * dvec3(clip.x, -clip.y, 1);
    if (plane.z <= 0) return std::nullopt;
    return dvec2(0.5 + plane.x / plane.z, 0.5 - plane.y / plane.z);
  }

  double coverage(dvec2 pixel) const {
    const dvec2 size = dvec2(uniforms_.rectW, uniforms_.rectH) * canvas_;
    const dvec2 center = dvec2(uniforms_.rectX, uniforms_.rectY) * canvas_ + size / 2.0;
    return covered(roundedDistance(pixel - center, size / 2.0, uniforms_.cornerRadius * size.y));
  }

  /// How far the picture has moved under a pixel while the shutter was open.
  dvec2 streak(dvec2 pixel, dvec2 place) const {
    if (sampling_.taps <= 1) return dvec2(0);
    const dvec2 before = pictureAt(pixel, toPlaneBefore_).value_or(place);
    return (place - before) * static_cast<double>(uniforms_.blur);
  }

  /// One tap for every second pixel of the way, or for every second texel where these are larger.
  int tapsAlong(dvec2 way) const {
    const glm::dmat3 toScreen = ofThePlane(uniforms_.mvp);
    const dvec2 pixels = dvec2(glm::length(dvec2(toScreen[0]) * canvas_),
                               glm::length(dvec2(toScreen[1]) * canvas_)) /
                         (2 * toScreen[2].z);
    const dvec2 detail = glm::min(pixels, dvec2(picture_.width(), picture_.height()));
    const double steps = std::ceil(glm::length(way * detail) / 2);
    return std::clamp(static_cast<int>(steps) + 1, 1, sampling_.taps);
  }

  dvec3 color(dvec2 pixel, dvec2 place) const {
    constexpr double h = 1e-3;
    const auto step = [&](dvec2 along) {
      return (pictureAt(pixel + along, toPlane_).value_or(place) -
              pictureAt(pixel - along, toPlane_).value_or(place)) /
             (2 * h);
    };
    const dvec2 way = streak(pixel, place);
    const int taps = tapsAlong(way);
    const double jitter = bayer(static_cast<unsigned>(pixel.x) + 5 * sampling_.frameIndex,
                                static_cast<unsigned>(pixel.y) + 3 * sampling_.frameIndex);
    dvec4 sum(0);
    for (int tap = 0; tap < taps; ++tap) {
      // From half the way before the frame's own instant to half of it after, one tap in the middle
      // half of each share.
      const double moment = taps > 1 ? (tap + 0.25 + 0.5 * jitter) / taps - 0.5 : 0;
      sum += picture_.read(place + way * moment, step({h, 0}), step({0, h}));
    }
    return dvec3(sum) / static_cast<double>(taps);
  }

  const FrameUniforms& uniforms_;
  const FrameSampling& sampling_;
  const ReferencePicture& picture_;
  dvec2 canvas_;
  glm::dmat3 toPlane_;
  glm::dmat3 toPlaneBefore_;
};

/// Opacities of a ripple's coloured part and of the outline under it.
struct RippleShape {
  double body = 0;
  double outline = 0;
};

double softBand(double distance, double radius, double width) {
  return std::exp(-std::pow((distance - radius) / width, 2));
}

RippleShape rippleShape(const RippleInstance& ripple, double distance, double pixel) {
  const auto disc = [&](double radius) { return covered((distance - radius) / pixel); };
  const auto ring = [&](double radius, double halfWidth) {
    return covered((std::abs(distance - radius) - halfWidth) / pixel);
  };
  const double radius = 1 - std::pow(1 - ripple.progress, 3);
  RippleShape shape;
  double edge = 0;
  if (ripple.style == 0) {
    edge = radius;
    const double crest = softBand(distance, radius - 0.1, 0.13);
    const double echo = 0.55 * softBand(distance, radius * 0.55, 0.1);
    const double water = 0.22 * disc(radius);
    const double beyond = std::clamp((distance - radius) / 0.1, 0.0, 1.0);
    shape.body = std::max({crest, echo, water}) * (1 - beyond * beyond * (3 - 2 * beyond));
  } else if (ripple.style == 1) {
    const double halfWidth = 0.11 + (0.035 - 0.11) * ripple.progress;
    edge = radius + halfWidth;
    shape.body = ring(radius, halfWidth);
  } else {
    edge = 0.45 + 0.4 * radius;
    shape.body = disc(edge);
  }
  shape.outline = 0.8 * ripple.stroke * ring(edge + 0.025, 0.025);
  return shape;
}

std::optional<dvec4> rippleColor(const RippleInstance& ripple, dvec2 pixel, dvec2 canvas) {
  const double radius = ripple.maxRadius * canvas.y;  // in pixels
  const double distance = glm::length(pixel - dvec2(ripple.center) * canvas) / radius;
  const RippleShape shape = rippleShape(ripple, distance, 1 / radius);
  const double fade = 1 - std::pow(ripple.progress, 2);
  const double body = shape.body * ripple.color.a * fade;
  const double outline = shape.outline * ripple.color.a * fade * (1 - body);
  if (body + outline <= 0) return std::nullopt;
  const dvec3 light = dvec3(ripple.color) * body + outline;
  return dvec4(light / (body + outline), body + outline);
}

std::optional<dvec4> cursorColor(const CursorUniforms& cursor, const ReferencePicture& bitmap,
                                 dvec2 pixel, dvec2 canvas) {
  const dvec2 size = dvec2(cursor.size) * canvas;
  const dvec2 place = (pixel - dvec2(cursor.origin) * canvas) / size;
  if (glm::any(glm::lessThan(place, dvec2(0))) || glm::any(glm::greaterThan(place, dvec2(1)))) {
    return std::nullopt;
  }
  const dvec4 color = bitmap.read(place, {1 / size.x, 0}, {0, 1 / size.y});
  if (color.a <= 0) return std::nullopt;
  return dvec4(dvec3(color) / color.a, color.a * cursor.opacity);
}

std::optional<dvec4> cameraColor(const PiPUniforms& window, const ReferencePicture& picture,
                                 dvec2 pixel, dvec2 canvas) {
  // Everything in window heights.
  const double height = 2 * window.halfSize.y * canvas.y;
  const dvec2 size(2 * window.halfSize.x * canvas.x / height, 1);
  const dvec2 local = (pixel - dvec2(window.center) * canvas) / height;
  const double distance = roundedDistance(local, size / 2.0, window.cornerRadius);
  const double inside = covered(distance * height);

  // The picture scaled until it covers the window.
  const double pictureAspect = window.camAspect;
  const dvec2 shown(std::max(size.x, pictureAspect), std::max(1.0, size.x / pictureAspect));
  const double side = window.mirrored != 0 ? -1 : 1;
  const dvec2 place = dvec2(side * local.x, local.y) / shown + 0.5;
  const dvec3 seen(picture.read(place, {1 / (height * shown.x), 0}, {0, 1 / (height * shown.y)}));

  const double rim = window.border > 0 ? covered((-distance - window.border) * height) : 0;
  const dvec3 color = glm::mix(seen, dvec3(1), rim * 0.92);
  const double shade =
      window.shadow * (1 - inside) *
      shadowAt(roundedDistance(local - dvec2(0, 0.04), size / 2.0, window.cornerRadius), 0.13);
  if (inside + shade <= 0) return std::nullopt;
  return dvec4(color * inside / (inside + shade), inside + shade);
}

}  // namespace

DoubleImage referenceComposite(const CompositePlan& plan, const ReferenceSources& sources,
                               const dvec4& clearColor) {
  DoubleImage image(plan.width, plan.height, inEightBits(clearColor));
  const dvec2 canvas(plan.width, plan.height);
  if (plan.backdrop) {
    drawOver(image, [&](dvec2 pixel) -> std::optional<dvec4> {
      return backdropColor(*plan.backdrop, pixel, canvas);
    });
  }
  if (plan.frame) drawOver(image, FrameDraw(*plan.frame, *sources.screen));
  for (const RippleInstance& ripple : plan.ripples) {
    drawOver(image, [&](dvec2 pixel) { return rippleColor(ripple, pixel, canvas); });
  }
  if (plan.cursor) {
    drawOver(image, [&](dvec2 pixel) {
      return cursorColor(*plan.cursor, *sources.cursor, pixel, canvas);
    });
  }
  if (plan.camera) {
    drawOver(image, [&](dvec2 pixel) {
      return cameraColor(*plan.camera, *sources.camera, pixel, canvas);
    });
  }
  return image;
}

}  // namespace vesk::compositor::test
