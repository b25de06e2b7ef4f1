#pragma once

#include <array>
#include <glm/mat4x4.hpp>
#include <glm/vec2.hpp>
#include <optional>

namespace vesk::motion {

struct SolvedCamera;

/// Where the camera stands at one instant. The picture is the plane z = 0, one unit high and
/// centred at the origin; the camera looks at `target` from a distance that follows from `framing`.
struct CameraPose {
  glm::vec2 target{0.5F, 0.5F};  ///< normalised point of the picture, y down
  double yaw = 0;                ///< degrees; positive: the camera stands on the right
  double pitch = 0;              ///< degrees; positive: the camera stands below
  double roll = 0;               ///< degrees
  double fov = 28;               ///< vertical field of view, degrees
  double framing = 1;            ///< zoom factor
  double motionBlur = 0;         ///< strength
  bool operator==(const CameraPose&) const = default;

  /// The pose within the limits in which the picture can fill a frame of this aspect.
  CameraPose clamped(double outputAspect) const;

  /// Look-at matrix (gluLookAt with the world's y up, then roll) from world to eye space.
  /// @param distance of the camera from the target, here and below; above 0.
  glm::dmat4 viewMatrix(double distance, double pictureAspect) const;

  using Corners = std::array<glm::vec2, 4>;
  /// The points of the picture, normalised, that fall on the frame's corners: top left, top right,
  /// bottom right, bottom left. Nothing when a corner looks past the plane.
  std::optional<Corners> visibleCorners(double distance, double pictureAspect,
                                        double outputAspect) const;

  /// The largest distance, up to 40, at which the picture covers the frame; nothing if none does.
  std::optional<double> maxFillDistance(double pictureAspect, double outputAspect) const;

  /// The fill solver: walks the target and, where needed, the camera so that the picture covers
  /// the frame. Nothing when no distance does. Call it on a clamped pose.
  std::optional<SolvedCamera> solve(double pictureAspect, double outputAspect) const;
};

/// A pose that fills the frame, and the camera's distance from the plane.
struct SolvedCamera {
  CameraPose pose;
  double distance = 0;
  bool operator==(const SolvedCamera&) const = default;
};

inline constexpr double nearPlane = 0.001;
inline constexpr double farPlane = 100;

/// Perspective projection to clip space with depth −1…1 between the two planes (gluPerspective).
glm::dmat4 projectionMatrix(double fov, double outputAspect);

/// Smallest distance of the corners from the picture's edges; negative when one lies outside.
double margin(const CameraPose::Corners& corners);

/// Largest tilt in degrees at which a frame can be filled with this lens.
double maxTilt(double fov, double outputAspect);

/// The output position (normalised, y down) of a point of the picture under a frame matrix;
/// nothing when it lies behind the camera.
std::optional<glm::vec2> project(glm::vec2 point, const glm::mat4& matrix);

}  // namespace vesk::motion
