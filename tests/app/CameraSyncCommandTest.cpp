#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <filesystem>

#include "app/CameraSyncCommand.h"
#include "app/VeskProcess.h"

namespace vesk::app {
namespace {

namespace fs = std::filesystem;
using testing::AllOf;
using testing::HasSubstr;
using testing::Not;

TEST(CameraSync, theEndsMeetWhereTheCameraIsAsMuchShorterAsItWasLate) {
  EXPECT_EQ(cameraEndReport({.duration = 10, .cameraOffset = 0.4, .cameraLength = 9.65}),
            "  时长  素材 10.000s   camera.mov 9.650s   差 0.350s（应≈offset 0.400s）\n"
            "  末尾映射  cameraTime(10.00) = 9.60   camera.mov 末尾 9.65   偏差 0.050s  ✓\n"
            "     （写成 t + offset 的话是 10.40，超出末尾 0.75s，最后那段定格，且全程口型早 "
            "0.80s）\n");
}

TEST(CameraSync, endsThatLieApartAreAFailure) {
  EXPECT_THAT(cameraEndReport({.duration = 10, .cameraOffset = -0.4, .cameraLength = 9.6}),
              HasSubstr("偏差 0.800s  ✗ 符号或偏差算错了，口型会对不上\n"));
}

TEST(CameraSync, thePackageIsTheNewestWithACamera) {
  const package::TemporaryDirectory folder;
  folder.put("录制 3.recording/meta.json", "{}");
  folder.put("录制 2.recording/camera.mov", "");
  folder.put("录制 1.recording/camera.mov", "");
  EXPECT_EQ(newestCameraPackage(folder.path()), folder / "录制 2.recording");
  EXPECT_EQ(newestCameraPackage(folder / "none"), std::nullopt);
}

TEST(CameraSync, withoutAPackageThereIsNothingToDiagnose) {
  const test::VeskProcess process;
  const auto result = process.run({"--diag-camera-sync"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, "找不到带 camera.mov 的录制包\n");
}

TEST(CameraSync, aPackageThatCannotBeOpenedIsSaidSo) {
  const test::VeskProcess process;
  const auto result = process.run({"--diag-camera-sync", "--package", "none.recording"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_THAT(result.output, HasSubstr("\n✗ 打开失败："));
}

// Where there is no sound server the players run all the same, and that nothing is heard is told.
TEST(CameraSync, theCameraFollowsTheScreen) {
  const test::VeskProcess process;
  const fs::path take = process.home() / "take.recording";
  fs::copy(VESK_SAMPLE_TAKE, take, fs::copy_options::recursive);
  const auto result = process.run({"--diag-camera-sync", "--package", take.string()});
  EXPECT_THAT(result.output,
              AllOf(HasSubstr(" 画中画同步诊断 · take.recording\n"),
                    HasSubstr("  素材时长 10.00s   cameraOffset 0.412s\n"),
                    HasSubstr("    ✓ 轨道摆放正常（时长没被顶长、没有空洞）\n"),
                    HasSubstr("  micOffset 0.183s   mic.m4a 存在\n"), HasSubstr("偏差 0.0"),
                    HasSubstr("  ✓ 2 条音频轨（系统音 + 麦克风）\n"),
                    HasSubstr("  ✗ 主播放器没在正常出声\n"), HasSubstr("次（约 6 秒播放）\n"),
                    Not(HasSubstr("✗ 符号")), Not(HasSubstr("麦克风没"))));
  EXPECT_EQ(result.exitCode, 1);
  // A picture of the camera stands for 1/30 s, and it must not be missing for longer.
  const auto drift = result.output.find("画中画最大漂移 0.0");
  EXPECT_NE(drift, std::string::npos) << result.output;
}

}  // namespace
}  // namespace vesk::app
