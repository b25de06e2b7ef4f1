#include "motion/CameraPose.h"

#include <algorithm>
#include <cmath>
#include <glm/common.hpp>
#include <glm/trigonometric.hpp>
#include <glm/vec4.hpp>

namespace vesk::motion {
namespace {

/// Beyond this angle from the plane's normal a corner ray of the frame nears the plane's horizon.
constexpr double steepestRay = 82;
/// A wide lens keeps at least this tilt.
constexpr double smallestTiltLimit = 6;

/// Angle in degrees between the camera's axis and the normal of the plane.
double tilt(double yaw, double pitch) {
  const double cosine = std::cos(glm::radians(yaw)) * std::cos(glm::radians(pitch));
  return glm::degrees(std::acos(std::clamp(cosine, -1.0, 1.0)));
}

/// The largest share of both angles, found by bisection, whose tilt stays within the limit.
double shareWithinTilt(double yaw, double pitch, double limit) {
  double within = 0;
  double beyond = 1;
  for (int i = 0; i < 40; ++i) {
    const double middle = (within + beyond) / 2;
    (tilt(middle * yaw, middle * pitch) > limit ? beyond : within) = middle;
  }
  return within;
}

}  // namespace

CameraPose CameraPose::clamped(double outputAspect) const {
  CameraPose pose = *this;
  pose.fov = std::clamp(fov, 12.0, 70.0);
  pose.yaw = std::clamp(yaw, -45.0, 45.0);
  pose.pitch = std::clamp(pitch, -35.0, 35.0);
  pose.roll = std::clamp(roll, -15.0, 15.0);
  pose.framing = std::clamp(framing, 1.0, 6.0);
  pose.target = glm::clamp(target, -0.5F, 1.5F);

  // A square-on camera is within any limit; most poses of a recording are, so they skip the sines.
  if (pose.yaw == 0 && pose.pitch == 0) {
    return pose;
  }
  const double limit = maxTilt(pose.fov, outputAspect);
  if (tilt(pose.yaw, pose.pitch) > limit) {
    const double share = shareWithinTilt(pose.yaw, pose.pitch, limit);
    pose.yaw *= share;
    pose.pitch *= share;
  }
  return pose;
}

double maxTilt(double fov, double outputAspect) {
  const double halfHeight = std::tan(glm::radians(fov) / 2);
  const double halfDiagonal = std::hypot(halfHeight, outputAspect * halfHeight);
  return std::max(steepestRay - glm::degrees(std::atan(halfDiagonal)), smallestTiltLimit);
}

glm::dmat4 projectionMatrix(double fov, double outputAspect) {
  const double focalLength = 1 / std::tan(glm::radians(fov) / 2);
  glm::dmat4 matrix(0.0);
  matrix[0][0] = focalLength / outputAspect;
  matrix[1][1] = focalLength;
  matrix[2][2] = (farPlane + nearPlane) / (nearPlane - farPlane);
  matrix[2][3] = -1;
  matrix[3][2] = 2 * farPlane * nearPlane / (nearPlane - farPlane);
  return matrix;
}

std::optional<glm::vec2> project(glm::vec2 point, const glm::mat4& matrix) {
  const glm::vec4 clip = matrix * glm::vec4(point.x - 0.5F, 0.5F - point.y, 0.0F, 1.0F);
  if (!(clip.w > 1e-6F)) {
    return std::nullopt;
  }
  return glm::vec2((1.0F + clip.x / clip.w) / 2.0F, (1.0F - clip.y / clip.w) / 2.0F);
}

}  // namespace vesk::motion
