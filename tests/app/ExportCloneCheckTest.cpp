#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <functional>
#include <string>
#include <vector>

#include "app/ExportCloneCheck.h"
#include "app/VeskProcess.h"
#include "motion/ReportText.h"

namespace vesk::app {
namespace {

using compositor::CompositeSettings;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::IsEmpty;

motion::CameraTrack steadyTrack(double framing) {
  motion::CameraTrack track;
  track.samples.assign(120, motion::CameraPose{.framing = framing});
  return track;
}

TEST(ExportCloneCheck, passes) {
  const test::VeskProcess process;
  const auto result = process.run({"--test-export-clone"});
  EXPECT_EQ(result.exitCode, 0);
  EXPECT_EQ(result.output, motion::ruler() + "\n 导出渲染器克隆\n" + motion::ruler() +
                               "\n  源渲染器 14 项参数全部设为非默认值，逐项比对克隆\n" +
                               motion::ruler() + "\n  ✓ 克隆完整且独立\n\n");
}

TEST(ExportCloneCheck, withoutATemporaryFolderThereIsNothingToClone) {
  const test::VeskProcess process;
  const auto result =
      process.run({"--test-export-clone"}, {.output = {}, .temporary = "/dev/null"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.output, EndsWith("  ✗ 造不出合成素材\n"));
}

TEST(ExportCloneCheck, equalLooksDifferInNothing) {
  CompositeSettings look;
  look.cameraTrack = steadyTrack(2);
  EXPECT_THAT(cloneDifferences(look, look, 2), IsEmpty());
  EXPECT_THAT(cloneDifferences({}, {}, 2), IsEmpty());
}

TEST(ExportCloneCheck, everyParameterIsComparedByItsName) {
  struct Change {
    std::string name;
    std::function<void(CompositeSettings&)> apply;
  };
  const std::vector<Change> changes{
      {"ripple", [](auto& look) { look.rippleSettings.stroke = false; }},
      {"cursor", [](auto& look) { look.cursorSettings.clickShrink = 0.27; }},
      {"frameStyle", [](auto& look) { look.frameStyle.shadow = 0.77; }},
      {"camera3D", [](auto& look) { look.camera3D.roll = 3; }},
      {"transitionEase", [](auto& look) { look.transitionEase = motion::CameraEase::springy; }},
      {"pip", [](auto& look) { look.pip.mirrored = false; }},
      {"motionBlurEnabled", [](auto& look) { look.motionBlurEnabled = false; }},
      {"motionBlurStrength", [](auto& look) { look.motionBlurStrength = 0.42; }},
      {"systemVolume", [](auto& look) { look.systemVolume = 0.35; }},
      {"micVolume", [](auto& look) { look.micVolume = 1.75; }},
      {"manualZoom", [](auto& look) { look.manualZoom = true; }},
      {"zoomLevel", [](auto& look) { look.zoomLevel = 3.7; }},
      {"zoomCenter", [](auto& look) { look.zoomCenter = {0.18F, 0.82F}; }},
  };
  for (const Change& change : changes) {
    CompositeSettings changed;
    change.apply(changed);
    EXPECT_THAT(cloneDifferences({}, changed, 2), ElementsAre(change.name));
  }
}

TEST(ExportCloneCheck, aLostTrackIsNamed) {
  CompositeSettings source;
  source.cameraTrack = steadyTrack(1);
  EXPECT_THAT(cloneDifferences(source, {}, 2), ElementsAre("cameraTrack 是否为空"));
}

TEST(ExportCloneCheck, aTrackThatDeviatesIsMeasured) {
  CompositeSettings source;
  source.cameraTrack = steadyTrack(2);
  CompositeSettings clone;
  clone.cameraTrack = steadyTrack(2.25);
  EXPECT_THAT(cloneDifferences(source, clone, 2),
              ElementsAre("cameraTrack 采样不一致，最大偏差 2.500e-01"));
  clone.cameraTrack = source.cameraTrack;
  clone.cameraTrack->samples.back().target.x = 0.75F;
  EXPECT_THAT(cloneDifferences(source, clone, 2), ElementsAre(HasSubstr("最大偏差 2.500e-01")))
      << "both ends are looked at";
}

}  // namespace
}  // namespace vesk::app
