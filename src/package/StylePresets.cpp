#include "package/StylePresets.h"

#include <cmath>

namespace vesk::package {

namespace {

/// A preset of a Camera3DSettings that is switched on.
CameraPreset camera(std::string_view name, double fov, double yaw, double pitch, double roll) {
  return {name, {.enabled = true, .fov = fov, .yaw = yaw, .pitch = pitch, .roll = roll}};
}

bool within(double a, double b, double tolerance) {
  return std::abs(a - b) < tolerance;
}

}  // namespace

const std::array<CameraPreset, 5>& cameraPresets() {
  static const std::array presets{
      camera("正面", 28, 0, 0, 0),       camera("微侧", 28, 12, 6, 0),
      camera("桌面俯拍", 34, 8, 18, -3), camera("长焦电影", 16, 22, 8, 0),
      camera("强透视", 52, 20, 10, 4),
  };
  return presets;
}

const std::array<glm::vec4, 5>& cameraPresetTints() {
  static const std::array tints{
      glm::vec4{0.42F, 0.47F, 0.56F, 1.0F}, glm::vec4{0.35F, 0.6F, 0.86F, 1.0F},
      glm::vec4{0.3F, 0.66F, 0.58F, 1.0F},  glm::vec4{0.83F, 0.6F, 0.31F, 1.0F},
      glm::vec4{0.68F, 0.42F, 0.8F, 1.0F},
  };
  return tints;
}

const std::array<RippleColorPreset, 5>& rippleColorPresets() {
  static const std::array<RippleColorPreset, 5> presets{{
      {"金", {1.0F, 0.843F, 0.0F, 1.0F}},
      {"绿", {0.0F, 1.0F, 0.533F, 1.0F}},
      {"红", {1.0F, 0.267F, 0.267F, 1.0F}},
      {"紫", {0.42F, 0.361F, 0.906F, 1.0F}},
      {"白", {1.0F, 1.0F, 1.0F, 1.0F}},
  }};
  return presets;
}

const std::array<FrameColorPreset, 12>& frameColorPresets() {
  static const std::array<FrameColorPreset, 12> presets{{
      {"石墨", {0.075F, 0.082F, 0.11F, 1.0F}, {0.15F, 0.125F, 0.195F, 1.0F}},
      {"暮蓝", {0.043F, 0.07F, 0.145F, 1.0F}, {0.098F, 0.16F, 0.29F, 1.0F}},
      {"夜航", {0.035F, 0.048F, 0.098F, 1.0F}, {0.105F, 0.15F, 0.27F, 1.0F}},
      {"紫雾", {0.088F, 0.062F, 0.135F, 1.0F}, {0.205F, 0.135F, 0.305F, 1.0F}},
      {"极光", {0.02F, 0.088F, 0.105F, 1.0F}, {0.07F, 0.235F, 0.225F, 1.0F}},
      {"墨绿", {0.045F, 0.12F, 0.1F, 1.0F}, {0.085F, 0.205F, 0.165F, 1.0F}},
      {"赤陶", {0.15F, 0.072F, 0.062F, 1.0F}, {0.33F, 0.155F, 0.125F, 1.0F}},
      {"暖砂", {0.17F, 0.13F, 0.098F, 1.0F}, {0.29F, 0.215F, 0.155F, 1.0F}},
      {"落日", {0.155F, 0.095F, 0.145F, 1.0F}, {0.39F, 0.195F, 0.23F, 1.0F}},
      {"石青", {0.055F, 0.105F, 0.135F, 1.0F}, {0.12F, 0.215F, 0.265F, 1.0F}},
      {"素白", {0.93F, 0.93F, 0.94F, 1.0F}, {0.86F, 0.87F, 0.9F, 1.0F}},
      {"沙丘", {0.945F, 0.92F, 0.885F, 1.0F}, {0.875F, 0.83F, 0.77F, 1.0F}},
  }};
  return presets;
}

const std::array<PiPPositionPreset, 4>& pipPositionPresets() {
  static const std::array<PiPPositionPreset, 4> presets{{
      {"左上", {0.155F, 0.2F}},
      {"右上", {0.845F, 0.2F}},
      {"左下", {0.155F, 0.8F}},
      {"右下", {0.845F, 0.8F}},
  }};
  return presets;
}

bool isSelected(const CameraPreset& preset, const Camera3DSettings& current) {
  constexpr double tolerance = 0.5;
  return within(current.fov, preset.settings.fov, tolerance) &&
         within(current.yaw, preset.settings.yaw, tolerance) &&
         within(current.pitch, preset.settings.pitch, tolerance) &&
         within(current.roll, preset.settings.roll, tolerance);
}

bool isSelected(const RippleColorPreset& preset, const RippleSettings& current) {
  // The colours are single-precision values and are compared as such.
  constexpr float tolerance = 0.01F;
  return std::abs(current.color.r - preset.color.r) < tolerance &&
         std::abs(current.color.g - preset.color.g) < tolerance &&
         std::abs(current.color.b - preset.color.b) < tolerance;
}

}  // namespace vesk::package
