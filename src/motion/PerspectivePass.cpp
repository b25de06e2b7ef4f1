#include "motion/PerspectivePass.h"

#include <algorithm>
#include <cmath>

#include "motion/CameraTrack.h"

namespace vesk::motion {
namespace {

constexpr std::size_t angleReach = 5;

struct Angles {
  double yaw = 0;
  double pitch = 0;
  double roll = 0;
};

double weight(std::size_t distance) {
  return 1.0 - static_cast<double>(distance) / static_cast<double>(angleReach + 1);
}

/// The angle at full strength for a coordinate of the point looked at: none at the centre line, all
/// of it from a quarter of the picture away from it, a smoothstep in between.
double leaning(float coordinate, double magnitude) {
  const double offset = std::clamp((coordinate - 0.5F) * 4.0F, -1.0F, 1.0F);
  const double size = std::abs(offset);
  const double angle = std::abs(magnitude) * (size * size * (3 - 2 * size));
  return offset < 0 ? -angle : angle;
}

Angles anglesOf(const CameraPose& pose, const package::Camera3DSettings& camera3D) {
  const double strength = std::clamp(2 * (pose.framing - 1), 0.0, 1.0);
  return {.yaw = leaning(pose.target.x, camera3D.yaw) * strength,
          .pitch = leaning(pose.target.y, camera3D.pitch) * strength,
          .roll = camera3D.roll * strength};
}

Angles meanAround(const std::vector<Angles>& angles, std::size_t i) {
  const std::size_t first = i - std::min(i, angleReach);
  const std::size_t last = std::min(i + angleReach, angles.size() - 1);
  double weights = 0;
  Angles sum;
  for (std::size_t j = first; j <= last; ++j) {
    const double u = weight(j < i ? i - j : j - i);
    weights += u;
    sum.yaw += u * angles[j].yaw;
    sum.pitch += u * angles[j].pitch;
    sum.roll += u * angles[j].roll;
  }
  return {.yaw = sum.yaw / weights, .pitch = sum.pitch / weights, .roll = sum.roll / weights};
}

}  // namespace

double yawToward(glm::vec2 target, double magnitude) {
  return leaning(target.x, magnitude);
}

std::vector<CameraPose> tiltCamera(std::vector<CameraPose> samples,
                                   const package::Camera3DSettings& camera3D) {
  std::vector<Angles> angles;
  angles.reserve(samples.size());
  for (const CameraPose& pose : samples) {
    angles.push_back(anglesOf(pose, camera3D));
  }
  for (std::size_t i = 0; i < samples.size(); ++i) {
    const Angles mean = meanAround(angles, i);
    samples[i].yaw = mean.yaw;
    samples[i].pitch = mean.pitch;
    samples[i].roll = mean.roll;
  }
  return samples;
}

}  // namespace vesk::motion
