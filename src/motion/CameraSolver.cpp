#include <algorithm>
#include <array>
#include <cmath>
#include <cstddef>
#include <glm/common.hpp>
#include <glm/geometric.hpp>
#include <glm/trigonometric.hpp>
#include <glm/vec3.hpp>
#include <limits>

#include "motion/CameraPose.h"

namespace vesk::motion {
namespace {

using Corners = CameraPose::Corners;

/// Unit vectors of the camera in world space.
struct CameraAxes {
  glm::dvec3 side;
  glm::dvec3 up;
  glm::dvec3 forward;
};

CameraAxes axesOf(const CameraPose& pose) {
  const double yaw = glm::radians(pose.yaw);
  const double pitch = glm::radians(pose.pitch);
  const glm::dvec3 toEye(std::sin(yaw) * std::cos(pitch), -std::sin(pitch),
                         std::cos(yaw) * std::cos(pitch));
  CameraAxes axes{};
  axes.forward = -toEye;
  axes.side = glm::normalize(glm::cross(axes.forward, glm::dvec3(0, 1, 0)));
  axes.up = glm::cross(axes.side, axes.forward);
  if (std::abs(pose.roll) > 1e-9) {
    const double cosine = std::cos(glm::radians(pose.roll));
    const double sine = std::sin(glm::radians(pose.roll));
    const CameraAxes level = axes;
    axes.side = level.side * cosine + level.up * sine;
    axes.up = level.up * cosine - level.side * sine;
  }
  return axes;
}

glm::dvec3 worldPoint(glm::vec2 normalised, double pictureAspect) {
  return {pictureAspect * (static_cast<double>(normalised.x) - 0.5),
          0.5 - static_cast<double>(normalised.y), 0};
}

/// The rays through the corners of the frame. They depend on angles and lens alone, so one object
/// serves every target and distance that the solver tries for a pose.
///
/// Each ray is given by the points that clip depths 0 and 1 stand for, relative to the eye. That is
/// what the inverse of projection × view gives, worked out by hand.
class CornerRays {
 public:
  CornerRays(const CameraPose& pose, double outputAspect) {
    static constexpr double depthZero = 2 * farPlane * nearPlane / (farPlane + nearPlane);
    static constexpr std::array<glm::dvec2, 4> corners{
        {{-1, 1}, {1, 1}, {1, -1}, {-1, -1}}};  // clip space, in the order of Corners
    const CameraAxes axes = axesOf(pose);
    const double halfHeight = std::tan(glm::radians(pose.fov) / 2);
    toEye_ = -axes.forward;
    for (std::size_t i = 0; i < corners.size(); ++i) {
      const glm::dvec3 direction = axes.forward +
                                   axes.side * (corners[i].x * outputAspect * halfHeight) +
                                   axes.up * (corners[i].y * halfHeight);
      rays_[i] = {direction * depthZero, direction * farPlane};
    }
  }

  /// The points of the picture that the rays hit; nothing when one of them does not.
  std::optional<Corners> hits(glm::vec2 target, double distance, double pictureAspect) const {
    const glm::dvec3 eye = worldPoint(target, pictureAspect) + toEye_ * distance;
    Corners corners;
    for (std::size_t i = 0; i < rays_.size(); ++i) {
      const glm::dvec3 from = eye + rays_[i].near;
      const glm::dvec3 to = eye + rays_[i].far;
      if (!(std::abs(to.z - from.z) > 1e-12)) {
        return std::nullopt;
      }
      const double s = -from.z / (to.z - from.z);
      const glm::dvec2 hit = glm::dvec2(from) + s * glm::dvec2(to - from);
      if (!(s >= 0) || std::isnan(hit.x) || std::isnan(hit.y)) {
        return std::nullopt;
      }
      // Rounded before the half is added: then the frame of a square-on camera ends exactly at the
      // picture's edge, and not a rounding error beyond it, where the solver would move closer.
      corners[i] = {static_cast<float>(hit.x / pictureAspect) + 0.5F,
                    0.5F - static_cast<float>(hit.y)};
    }
    return corners;
  }

  bool fill(glm::vec2 target, double distance, double pictureAspect) const {
    const std::optional<Corners> corners = hits(target, distance, pictureAspect);
    return corners && margin(*corners) >= 0;
  }

 private:
  struct Ray {
    glm::dvec3 near{};
    glm::dvec3 far{};
  };
  glm::dvec3 toEye_{};
  std::array<Ray, 4> rays_{};
};

std::optional<double> largestFillDistance(const CornerRays& rays, glm::vec2 target,
                                          double pictureAspect) {
  constexpr double farthest = 40;
  if (rays.fill(target, farthest, pictureAspect)) {
    return farthest;
  }
  double failing = farthest;
  double filling = farthest * 0.85;
  for (int attempts = 1; !rays.fill(target, filling, pictureAspect); ++attempts) {
    if (attempts == 60) {
      return std::nullopt;
    }
    failing = filling;
    filling *= 0.85;
  }
  for (int i = 0; i < 32; ++i) {
    const double middle = (filling + failing) / 2;
    (rays.fill(target, middle, pictureAspect) ? filling : failing) = middle;
  }
  return filling;
}

/// How far an interval has to move to lie within 0…1; 0 when it is too wide to fit.
float shiftInside(float low, float high) {
  if (high - low >= 1) {
    return 0;
  }
  if (low < 0) {
    return -low;
  }
  return high > 1 ? 1 - high : 0;
}

glm::vec2 shiftInside(const Corners& corners) {
  glm::vec2 low = corners[0];
  glm::vec2 high = corners[0];
  for (const glm::vec2& corner : corners) {
    low = glm::min(low, corner);
    high = glm::max(high, corner);
  }
  return {shiftInside(low.x, high.x), shiftInside(low.y, high.y)};
}

}  // namespace

glm::dmat4 CameraPose::viewMatrix(double distance, double pictureAspect) const {
  const CameraAxes axes = axesOf(*this);
  const glm::dvec3 eye = worldPoint(target, pictureAspect) - axes.forward * distance;
  const std::array<glm::dvec3, 3> rows{axes.side, axes.up, -axes.forward};
  glm::dmat4 matrix(1.0);
  for (int row = 0; row < 3; ++row) {
    const glm::dvec3& axis = rows[static_cast<std::size_t>(row)];
    matrix[0][row] = axis.x;
    matrix[1][row] = axis.y;
    matrix[2][row] = axis.z;
    matrix[3][row] = -glm::dot(axis, eye);
  }
  return matrix;
}

std::optional<Corners> CameraPose::visibleCorners(double distance, double pictureAspect,
                                                  double outputAspect) const {
  return CornerRays(*this, outputAspect).hits(target, distance, pictureAspect);
}

double margin(const CameraPose::Corners& corners) {
  double smallest = std::numeric_limits<double>::infinity();
  for (const glm::vec2& corner : corners) {
    const glm::dvec2 point(corner);
    smallest = std::min({smallest, point.x, 1 - point.x, point.y, 1 - point.y});
  }
  return smallest;
}

std::optional<double> CameraPose::maxFillDistance(double pictureAspect, double outputAspect) const {
  return largestFillDistance(CornerRays(*this, outputAspect), target, pictureAspect);
}

std::optional<SolvedCamera> CameraPose::solve(double pictureAspect, double outputAspect) const {
  const CornerRays rays(*this, outputAspect);
  SolvedCamera solved{*this, 0.5 / std::tan(glm::radians(fov) / 2) / std::max(framing, 0.0001)};
  glm::vec2& aim = solved.pose.target;
  for (int i = 0; i < 6; ++i) {
    const std::optional<Corners> corners = rays.hits(aim, solved.distance, pictureAspect);
    if (!corners) {
      break;
    }
    const glm::vec2 shift = shiftInside(*corners);
    if (glm::length(shift) < 1e-6F) {
      break;
    }
    aim += shift;
  }
  if (rays.fill(aim, solved.distance, pictureAspect)) {
    return solved;
  }
  const std::optional<double> filling = largestFillDistance(rays, aim, pictureAspect);
  if (!filling) {
    return std::nullopt;
  }
  solved.distance = std::min(solved.distance, *filling);
  return solved;
}

}  // namespace vesk::motion
