#include "compositor/CursorImage.h"

#include <cairo/cairo.h>

#include <algorithm>
#include <array>
#include <cmath>
#include <cstring>
#include <memory>
#include <numbers>
#include <span>

namespace vesk::compositor {
namespace {

using package::CursorStyle;

struct SurfaceDeleter {
  void operator()(cairo_surface_t* surface) const { cairo_surface_destroy(surface); }
};
struct ContextDeleter {
  void operator()(cairo_t* context) const { cairo_destroy(context); }
};
using Surface = std::unique_ptr<cairo_surface_t, SurfaceDeleter>;
using Context = std::unique_ptr<cairo_t, ContextDeleter>;

struct Shadow {
  double blur;   ///< points; the Gaussian's sigma is half of it
  double alpha;  ///< of black
};
// Upwards in a space with y up, hence downwards here: the light comes from above.
constexpr double shadowOffset = 1;

Surface makeSurface(int width, int height) {
  return Surface(cairo_image_surface_create(CAIRO_FORMAT_ARGB32, width, height));
}

Context makeContext(cairo_surface_t* surface) {
  Context context(cairo_create(surface));
  cairo_scale(context.get(), CursorImage::pixelsPerPoint, CursorImage::pixelsPerPoint);
  cairo_set_antialias(context.get(), CAIRO_ANTIALIAS_BEST);
  return context;
}

void setGrey(cairo_t* context, double grey, double alpha) {
  cairo_set_source_rgba(context, grey, grey, grey, alpha);
}

void circle(cairo_t* context, double x, double y, double radius) {
  cairo_new_sub_path(context);
  cairo_arc(context, x, y, radius, 0, 2 * std::numbers::pi);
}

std::vector<double> gaussian(double sigma) {
  const int reach = std::max(static_cast<int>(std::ceil(sigma * 3)), 1);
  std::vector<double> weights;
  double sum = 0;
  for (int offset = -reach; offset <= reach; ++offset) {
    weights.push_back(std::exp(-0.5 * offset * offset / (sigma * sigma)));
    sum += weights.back();
  }
  for (double& weight : weights) weight /= sum;
  return weights;
}

// One pass of a separable blur over `count` values that lie `step` apart; beyond the ends is zero.
void blurLine(std::span<double> values, std::size_t first, std::size_t step, int count,
              std::span<const double> weights) {
  const int reach = static_cast<int>(weights.size() / 2);
  std::vector<double> line(static_cast<std::size_t>(count));
  for (int index = 0; index < count; ++index) {
    const int from = std::max(index - reach, 0);
    const int to = std::min(index + reach, count - 1);
    for (int other = from; other <= to; ++other) {
      const int weight = other - index + reach;
      line[static_cast<std::size_t>(index)] +=
          values[first + static_cast<std::size_t>(other) * step] *
          weights[static_cast<std::size_t>(weight)];
    }
  }
  for (int index = 0; index < count; ++index) {
    values[first + static_cast<std::size_t>(index) * step] = line[static_cast<std::size_t>(index)];
  }
}

// The blurred alpha of a layer as a surface that holds only alpha.
Surface blurredAlpha(cairo_surface_t* layer, double sigma) {
  cairo_surface_flush(layer);
  const int width = cairo_image_surface_get_width(layer);
  const int height = cairo_image_surface_get_height(layer);
  const std::ptrdiff_t layerStride = cairo_image_surface_get_stride(layer);
  const unsigned char* layerPixels = cairo_image_surface_get_data(layer);
  const auto columns = static_cast<std::size_t>(width);
  std::vector<double> alpha(columns * static_cast<std::size_t>(height));
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      std::uint32_t pixel = 0;
      std::memcpy(&pixel, layerPixels + y * layerStride + x * std::ptrdiff_t{4}, sizeof pixel);
      alpha[static_cast<std::size_t>(y) * columns + static_cast<std::size_t>(x)] = pixel >> 24U;
    }
  }
  const std::vector<double> weights = gaussian(sigma);
  for (int y = 0; y < height; ++y) {
    blurLine(alpha, static_cast<std::size_t>(y) * columns, 1, width, weights);
  }
  for (int x = 0; x < width; ++x) {
    blurLine(alpha, static_cast<std::size_t>(x), columns, height, weights);
  }
  Surface result(cairo_image_surface_create(CAIRO_FORMAT_A8, width, height));
  unsigned char* pixels = cairo_image_surface_get_data(result.get());
  const std::ptrdiff_t stride = cairo_image_surface_get_stride(result.get());
  for (int y = 0; y < height; ++y) {
    for (int x = 0; x < width; ++x) {
      pixels[y * stride + x] = static_cast<unsigned char>(
          std::lround(alpha[static_cast<std::size_t>(y) * columns + static_cast<std::size_t>(x)]));
    }
  }
  cairo_surface_mark_dirty(result.get());
  return result;
}

// Draws with `paint` into a layer of its own, then the layer's shadow and the layer itself.
template <typename Paint>
void paintWithShadow(cairo_t* context, const Shadow& shadow, Paint paint) {
  cairo_surface_t* target = cairo_get_target(context);
  const Surface layer =
      makeSurface(cairo_image_surface_get_width(target), cairo_image_surface_get_height(target));
  paint(makeContext(layer.get()).get());
  const double sigma = shadow.blur / 2 * CursorImage::pixelsPerPoint;
  const Surface alpha = blurredAlpha(layer.get(), sigma);
  cairo_save(context);
  cairo_identity_matrix(context);
  setGrey(context, 0, shadow.alpha);
  cairo_mask_surface(context, alpha.get(), 0, shadowOffset * CursorImage::pixelsPerPoint);
  cairo_set_source_surface(context, layer.get(), 0, 0);
  cairo_paint(context);
  cairo_restore(context);
}

void arrowPath(cairo_t* context) {
  constexpr std::array<std::array<double, 2>, 7> outline{
      {{1.6, 1.6}, {1.6, 20.4}, {6.2, 16.1}, {9.3, 23.6}, {12.4, 22.3}, {9.4, 15.0}, {15.6, 15.0}}};
  cairo_new_path(context);
  for (const auto& [x, y] : outline) cairo_line_to(context, x, y);
  cairo_close_path(context);
}

void drawArrow(cairo_t* context, bool dark) {
  paintWithShadow(context, {.blur = 2.2, .alpha = 0.42}, [&](cairo_t* layer) {
    arrowPath(layer);
    setGrey(layer, dark ? 0.11 : 1.0, 1);
    cairo_fill(layer);
  });
  arrowPath(context);
  cairo_set_line_join(context, CAIRO_LINE_JOIN_ROUND);
  cairo_set_line_width(context, dark ? 1.4 : 1.3);
  setGrey(context, dark ? 1 : 0, dark ? 0.95 : 0.92);
  cairo_stroke(context);
}

void drawDot(cairo_t* context, double center, double radius) {
  setGrey(context, 1, 0.18);
  circle(context, center, center, 0.92 * radius);
  cairo_fill(context);
  paintWithShadow(context, {.blur = 2.6, .alpha = 0.5}, [&](cairo_t* layer) {
    setGrey(layer, 1, 0.97);
    circle(layer, center, center, 0.46 * radius);
    cairo_fill(layer);
  });
  setGrey(context, 0, 0.35);
  cairo_set_line_width(context, 1.0);
  circle(context, center, center, 0.46 * radius);
  cairo_stroke(context);
}

void drawRing(cairo_t* context, double center, double radius) {
  paintWithShadow(context, {.blur = 2.6, .alpha = 0.5}, [&](cairo_t* layer) {
    setGrey(layer, 1, 0.97);
    cairo_set_line_width(layer, 2.6);
    circle(layer, center, center, 0.66 * radius);
    cairo_stroke(layer);
  });
  setGrey(context, 0, 0.42);
  cairo_set_line_width(context, 1.0);
  circle(context, center, center, 0.66 * radius + 1.6);
  cairo_stroke(context);
}

void drawCrosshair(cairo_t* context, double center, double radius) {
  const double inner = 0.22 * radius;
  const double outer = 0.86 * radius;
  const auto strokeArms = [&](double grey, double alpha, double width) {
    cairo_new_path(context);
    cairo_move_to(context, center - outer, center);
    cairo_line_to(context, center - inner, center);
    cairo_move_to(context, center + inner, center);
    cairo_line_to(context, center + outer, center);
    cairo_move_to(context, center, center - outer);
    cairo_line_to(context, center, center - inner);
    cairo_move_to(context, center, center + inner);
    cairo_line_to(context, center, center + outer);
    cairo_set_line_cap(context, CAIRO_LINE_CAP_ROUND);
    cairo_set_line_width(context, width);
    setGrey(context, grey, alpha);
    cairo_stroke(context);
  };
  strokeArms(0, 0.5, 3.4);
  strokeArms(1, 0.97, 1.6);
  setGrey(context, 1, 0.97);
  circle(context, center, center, 1.5);
  cairo_fill(context);
}

void drawStyle(cairo_t* context, CursorStyle style, const CursorGeometry& geometry) {
  const double radius = std::min(geometry.size.x, geometry.size.y) / 2;
  const double center = geometry.size.x / 2;
  switch (style) {
    case CursorStyle::arrow:
      return drawArrow(context, false);
    case CursorStyle::arrowDark:
      return drawArrow(context, true);
    case CursorStyle::dot:
      return drawDot(context, center, radius);
    case CursorStyle::ring:
      return drawRing(context, center, radius);
    case CursorStyle::crosshair:
      return drawCrosshair(context, center, radius);
  }
}

}  // namespace

CursorGeometry cursorGeometry(CursorStyle style) {
  if (style == CursorStyle::arrow || style == CursorStyle::arrowDark) {
    return {.size = {20, 28}, .hotspot = {1.6, 1.68}};
  }
  return {.size = {26, 26}, .hotspot = {13, 13}};
}

std::optional<CursorImage> drawCursorImage(CursorStyle style) {
  const CursorGeometry geometry = cursorGeometry(style);
  CursorImage image{.width = static_cast<int>(geometry.size.x) * CursorImage::pixelsPerPoint,
                    .height = static_cast<int>(geometry.size.y) * CursorImage::pixelsPerPoint,
                    .pixels = {}};
  const Surface surface = makeSurface(image.width, image.height);
  const Context context = makeContext(surface.get());
  drawStyle(context.get(), style, geometry);
  if (cairo_status(context.get()) != CAIRO_STATUS_SUCCESS) return std::nullopt;
  cairo_surface_flush(surface.get());
  const auto* rows = reinterpret_cast<const std::byte*>(  // NOLINT: cairo gives unsigned char
      cairo_image_surface_get_data(surface.get()));
  const std::ptrdiff_t stride = cairo_image_surface_get_stride(surface.get());
  for (int y = 0; y < image.height; ++y) {
    image.pixels.insert(image.pixels.end(), rows + y * stride, rows + y * stride + image.stride());
  }
  return image;
}

}  // namespace vesk::compositor
