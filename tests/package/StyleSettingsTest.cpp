#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "package/StylePresets.h"
#include "package/StyleSettings.h"

namespace vesk::package {
namespace {

template <typename Cases, typename FromRaw>
void expectRoundTrip(const Cases& cases, FromRaw fromRaw) {
  for (const auto value : cases) EXPECT_EQ(fromRaw(rawValue(value)), value);
}

TEST(StyleSettings, everyCaseComesBackFromItsRawValue) {
  expectRoundTrip(allRippleStyles, rippleStyle);
  expectRoundTrip(allCursorStyles, cursorStyle);
  expectRoundTrip(allCameraModes, cameraMode);
  expectRoundTrip(FrameStyle::allBackgrounds, frameBackground);
  expectRoundTrip(PiPSettings::allShapes, pipShape);
}

TEST(StyleSettings, rawValuesAreThoseOfTheFileFormat) {
  EXPECT_EQ(rawValue(RippleStyle::ripple), 0.0F);
  EXPECT_EQ(rawValue(RippleStyle::ring), 1.0F);
  EXPECT_EQ(rawValue(RippleStyle::dot), 2.0F);
  EXPECT_EQ(rawValue(CursorStyle::arrow), "箭头");
  EXPECT_EQ(rawValue(CursorStyle::arrowDark), "深色箭头");
  EXPECT_EQ(rawValue(CursorStyle::dot), "光点");
  EXPECT_EQ(rawValue(CursorStyle::ring), "描边环");
  EXPECT_EQ(rawValue(CursorStyle::crosshair), "准星");
  EXPECT_EQ(rawValue(FrameStyle::Background::none), "无");
  EXPECT_EQ(rawValue(FrameStyle::Background::solid), "纯色");
  EXPECT_EQ(rawValue(FrameStyle::Background::gradient), "渐变");
  EXPECT_EQ(rawValue(PiPSettings::Shape::circle), "圆形");
  EXPECT_EQ(rawValue(PiPSettings::Shape::rounded), "圆角");
  EXPECT_EQ(rawValue(CameraMode::zoom), "放大");
  EXPECT_EQ(rawValue(CameraMode::perspective), "3D 透视");
}

TEST(StyleSettings, aRawValueOfNoCaseGivesNothing) {
  EXPECT_EQ(rippleStyle(1.5F), std::nullopt);
  EXPECT_EQ(rippleStyle(-1.0F), std::nullopt);
  EXPECT_EQ(cursorStyle("箭"), std::nullopt);
  EXPECT_EQ(cursorStyle(""), std::nullopt);
  EXPECT_EQ(frameBackground("none"), std::nullopt);
  EXPECT_EQ(pipShape("方形"), std::nullopt);
  EXPECT_EQ(cameraMode("3D透视"), std::nullopt);
}

TEST(StyleSettings, everyCursorStyleHasItsTooltip) {
  EXPECT_EQ(tooltip(CursorStyle::arrow), "深浅背景都压得住");
  EXPECT_EQ(tooltip(CursorStyle::arrowDark), "浅色内容上更稳");
  EXPECT_EQ(tooltip(CursorStyle::dot), "只标位置，不挡内容");
  EXPECT_EQ(tooltip(CursorStyle::ring), "指得清又不遮挡");
  EXPECT_EQ(tooltip(CursorStyle::crosshair), "像素级操作");
}

TEST(StyleSettings, aNewRecordHasTheDefaults) {
  EXPECT_EQ(RippleSettings{}.size, 0.022);
  EXPECT_EQ(RippleSettings{}.color, (glm::vec4{1.0F, 0.843F, 0.0F, 1.0F}));
  EXPECT_EQ(CursorSettings{}.scale, 1.4);
  EXPECT_EQ(CursorSettings{}.smoothingWindow, 0.12);
  EXPECT_EQ(PiPSettings{}.center, (glm::vec2{0.845F, 0.8F}));
  EXPECT_TRUE(PiPSettings{}.mirrored);
  EXPECT_FALSE(FrameStyle{}.enabled);
  EXPECT_FALSE(Camera3DSettings{}.enabled);
}

TEST(StyleSettings, pictureInPictureSettingsCompareFieldByField) {
  PiPSettings changed;
  EXPECT_EQ(changed, PiPSettings{});
  changed.center.y = 0.2F;
  EXPECT_NE(changed, PiPSettings{});
}

std::vector<std::string_view> selectedNames(const Camera3DSettings& settings) {
  std::vector<std::string_view> names;
  for (const auto& preset : cameraPresets()) {
    if (isSelected(preset, settings)) names.push_back(preset.name);
  }
  return names;
}

TEST(StylePresets, theDefaultFrameColoursAreTheFirstPreset) {
  const auto& first = frameColorPresets().front();
  EXPECT_EQ(first.name, "石墨");
  EXPECT_EQ(first.colorA, FrameStyle{}.colorA);
  EXPECT_EQ(first.colorB, FrameStyle{}.colorB);
}

TEST(StylePresets, theDefaultCameraShowsItsPresetAsSelected) {
  EXPECT_THAT(selectedNames({}), testing::ElementsAre("微侧"));
}

TEST(StylePresets, everyCameraPresetIsOnAndSelectsItself) {
  for (const auto& preset : cameraPresets()) {
    EXPECT_TRUE(preset.settings.enabled);
    EXPECT_THAT(selectedNames(preset.settings), testing::ElementsAre(preset.name));
  }
}

TEST(StylePresets, aCameraPresetIsSelectedWithinLessThanHalfADegree) {
  Camera3DSettings settings = cameraPresets()[2].settings;
  settings.roll += 0.49;
  EXPECT_THAT(selectedNames(settings), testing::ElementsAre("桌面俯拍"));
  settings.roll = cameraPresets()[2].settings.roll + 0.5;
  EXPECT_THAT(selectedNames(settings), testing::IsEmpty());
}

TEST(StylePresets, aRippleColourIsSelectedByItsColourAlone) {
  RippleSettings settings;
  EXPECT_TRUE(isSelected(rippleColorPresets()[0], settings));
  settings.color = {0.995F, 0.85F, 0.005F, 0.3F};
  EXPECT_TRUE(isSelected(rippleColorPresets()[0], settings));
  settings.color.g = 0.86F;
  EXPECT_FALSE(isSelected(rippleColorPresets()[0], settings));
}

TEST(StylePresets, colourTablesAreOpaqueAndPositionsAreTheFourCorners) {
  for (const auto& preset : rippleColorPresets()) EXPECT_EQ(preset.color.a, 1.0F);
  for (const auto& preset : frameColorPresets()) {
    EXPECT_EQ(preset.colorA.a, 1.0F);
    EXPECT_EQ(preset.colorB.a, 1.0F);
  }
  for (const auto& tint : cameraPresetTints()) EXPECT_EQ(tint.a, 1.0F);
  EXPECT_EQ(pipPositionPresets().back().center, PiPSettings{}.center);
  EXPECT_EQ(pipPositionPresets().front().center, (glm::vec2{0.155F, 0.2F}));
}

}  // namespace
}  // namespace vesk::package
