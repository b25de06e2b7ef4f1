#include "compositor/FrameLayout.h"

#include <algorithm>
#include <cmath>
#include <glm/ext/matrix_transform.hpp>
#include <span>

namespace vesk::compositor {
namespace {

bool isFinite(const glm::mat4& matrix) {
  const std::span<const float, 16> values(&matrix[0].x, 16);
  return std::ranges::all_of(values, [](float value) { return std::isfinite(value); });
}

}  // namespace

double videoAspect(const package::RecordingMeta* meta) {
  constexpr double fallback = 16.0 / 9.0;
  if (meta == nullptr || meta->captureHeight < 1) return fallback;
  return static_cast<double>(meta->captureWidth) / static_cast<double>(meta->captureHeight);
}

ContentRect contentRect(const package::RecordingMeta* meta, const package::FrameStyle& frameStyle,
                        double width, double height) {
  if (meta == nullptr || !(width > 0) || !(height > 0)) return {};
  const double viewAspect = width / height;
  const double pictureAspect = videoAspect(meta);
  double w = 1;
  double h = 1;
  if (viewAspect < pictureAspect) {
    h = viewAspect / pictureAspect;
  } else {
    w = pictureAspect / viewAspect;
  }
  if (frameStyle.enabled) {
    w *= 1 - 2 * frameStyle.padding;
    h *= 1 - 2 * frameStyle.padding;
  }
  return {.origin = glm::vec2((1 - w) / 2, (1 - h) / 2), .size = glm::vec2(w, h)};
}

std::optional<glm::mat4> frameMatrix(const package::RecordingMeta* meta,
                                     const motion::CameraPose& pose, const ContentRect& rect,
                                     double canvasAspect) {
  const double x = rect.origin.x;
  const double y = rect.origin.y;
  const double w = rect.size.x;
  const double h = rect.size.y;
  const double contentAspect = canvasAspect * w / std::max(h, 0.000001);
  const double pictureAspect = videoAspect(meta);
  const auto solved = pose.clamped(contentAspect).solve(pictureAspect, contentAspect);
  if (!solved) return std::nullopt;

  const glm::dmat4 projection = motion::projectionMatrix(solved->pose.fov, contentAspect);
  const glm::dmat4 view = solved->pose.viewMatrix(solved->distance, pictureAspect);
  const glm::dmat4 model = glm::scale(glm::dmat4(1), glm::dvec3(pictureAspect, 1, 1));
  const glm::dmat4 placement(glm::dvec4(w, 0, 0, 0), glm::dvec4(0, h, 0, 0), glm::dvec4(0, 0, 1, 0),
                             glm::dvec4(2 * x + w - 1, 1 - 2 * y - h, 0, 1));
  const glm::mat4 matrix(placement * projection * view * model);
  // A picture without an area can be looked at from anywhere and seen from nowhere.
  if (!isFinite(matrix)) return std::nullopt;
  return matrix;
}

}  // namespace vesk::compositor
