#pragma once

#include <array>
#include <string_view>

#include "package/StyleSettings.h"

// The constant tables that the inspector offers. Which entry is selected is worked out from the
// present values and never stored.
namespace vesk::package {

struct CameraPreset {
  std::string_view name;
  Camera3DSettings settings;
};
struct RippleColorPreset {
  std::string_view name;
  glm::vec4 color;
};
struct FrameColorPreset {
  std::string_view name;
  glm::vec4 colorA;
  glm::vec4 colorB;
};
struct PiPPositionPreset {
  std::string_view name;
  glm::vec2 center;
};

const std::array<CameraPreset, 5>& cameraPresets();
/// Opaque sRGB tints of the camera tiles; a tile takes the one at its index modulo the count.
const std::array<glm::vec4, 5>& cameraPresetTints();
const std::array<RippleColorPreset, 5>& rippleColorPresets();
const std::array<FrameColorPreset, 12>& frameColorPresets();
const std::array<PiPPositionPreset, 4>& pipPositionPresets();

/// True when fov, yaw, pitch and roll each lie within 0.5 of the preset's.
bool isSelected(const CameraPreset& preset, const Camera3DSettings& current);
/// True when red, green and blue each lie within 0.01 of the preset's.
bool isSelected(const RippleColorPreset& preset, const RippleSettings& current);

}  // namespace vesk::package
