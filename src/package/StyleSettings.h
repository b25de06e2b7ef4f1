#pragma once

#include <array>
#include <glm/vec2.hpp>
#include <glm/vec4.hpp>
#include <optional>
#include <string_view>

// The look of a finished movie as plain values. The raw values of the enumerations stand in files
// and, where they are Chinese, are at once the labels the user sees.
//
// Units: sizes and radii are shares of the picture's height, so that 1080p and 4K look alike;
// times are seconds, angles degrees, colours non-linear RGBA in 0…1 with straight alpha.
namespace vesk::package {

/// Form of a click ripple; the number goes straight to the ripple shader.
enum class RippleStyle { ripple, ring, dot };

/// Form of the redrawn cursor.
enum class CursorStyle { arrow, arrowDark, dot, ring, crosshair };

/// The lens language of a take: flat zoom and pan, or the perspective camera.
enum class CameraMode { zoom, perspective };

inline constexpr std::array allRippleStyles{RippleStyle::ripple, RippleStyle::ring,
                                            RippleStyle::dot};
inline constexpr std::array allCursorStyles{CursorStyle::arrow, CursorStyle::arrowDark,
                                            CursorStyle::dot, CursorStyle::ring,
                                            CursorStyle::crosshair};
inline constexpr std::array allCameraModes{CameraMode::zoom, CameraMode::perspective};

float rawValue(RippleStyle style);
std::string_view rawValue(CursorStyle style);
std::string_view rawValue(CameraMode mode);
/// Text of the style's tile in the inspector.
std::string_view tooltip(CursorStyle style);

/// The case with exactly this raw value, or nothing.
std::optional<RippleStyle> rippleStyle(float raw);
std::optional<CursorStyle> cursorStyle(std::string_view raw);
std::optional<CameraMode> cameraMode(std::string_view raw);

struct RippleSettings {
  RippleStyle style = RippleStyle::ripple;
  double size = 0.022;
  double duration = 0.25;
  glm::vec4 color{1.0F, 0.843F, 0.0F, 1.0F};
  double opacity = 0.85;
  bool stroke = true;
  bool enabled = true;
  bool operator==(const RippleSettings&) const = default;
};

struct CursorSettings {
  bool visible = true;
  CursorStyle style = CursorStyle::arrow;
  double scale = 1.4;
  double smoothing = 0.7;         ///< strength, 0…1
  double smoothingWindow = 0.12;  ///< seconds
  double clickShrink = 0.12;      ///< share by which a press shrinks the cursor
  bool operator==(const CursorSettings&) const = default;
};

struct FrameStyle {
  enum class Background { none, solid, gradient };
  static constexpr std::array allBackgrounds{Background::none, Background::solid,
                                             Background::gradient};

  bool enabled = false;
  Background background = Background::gradient;
  double padding = 0.07;  ///< share of the fitted picture, on each side
  double cornerRadius = 0.02;
  double shadow = 0.5;
  glm::vec4 colorA{0.075F, 0.082F, 0.11F, 1.0F};
  glm::vec4 colorB{0.15F, 0.125F, 0.195F, 1.0F};
  bool operator==(const FrameStyle&) const = default;
};

std::string_view rawValue(FrameStyle::Background background);
std::optional<FrameStyle::Background> frameBackground(std::string_view raw);

struct PiPSettings {
  enum class Shape { circle, rounded };
  static constexpr std::array allShapes{Shape::circle, Shape::rounded};

  bool enabled = true;
  Shape shape = Shape::circle;
  double size = 0.22;
  glm::vec2 center{0.845F, 0.8F};
  double cornerRadius = 0.18;
  double border = 0.018;
  double shadow = 0.0;
  bool mirrored = true;
  bool operator==(const PiPSettings&) const = default;
};

std::string_view rawValue(PiPSettings::Shape shape);
std::optional<PiPSettings::Shape> pipShape(std::string_view raw);

struct Camera3DSettings {
  bool enabled = false;
  double fov = 28.0;
  double yaw = 12.0;   ///< a magnitude: the side follows the point looked at
  double pitch = 6.0;  ///< a magnitude in the same way
  double roll = 0.0;   ///< a styling tilt, with a sign
  bool operator==(const Camera3DSettings&) const = default;
};

}  // namespace vesk::package
