#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <regex>
#include <string>
#include <vector>

#include "app/CameraSyncCommand.h"
#include "app/VeskProcess.h"
#include "capture/pipewire/TestSoundServer.h"
#include "capture/pipewire/VirtualSink.h"

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

/// The shared take, in the home of a process.
fs::path putTake(const test::VeskProcess& process) {
  fs::path take = process.home() / "take.recording";
  fs::copy(VESK_SAMPLE_TAKE, take, fs::copy_options::recursive);
  return take;
}

/// The same, that says to be of another length.
fs::path putTake(const test::VeskProcess& process, double duration) {
  fs::path take = putTake(process);
  auto meta = nlohmann::json::parse(process.home().contents("take.recording/meta.json"));
  meta["duration"] = duration;
  process.home().put("take.recording/meta.json", meta.dump());
  return take;
}

test::VeskProcess::Result diagnose(const test::VeskProcess& process, const std::string& take,
                                   const std::vector<std::string>& variables = {}) {
  return process.run({"--diag-camera-sync", "--package", take},
                     {.output = {}, .temporary = {}, .variables = variables});
}

/// What a row says.
struct Row {
  double time = 0;
  double main = 0;
  double camera = 0;
  double wanted = 0;
  double drift = 0;
};

std::vector<Row> rowsIn(const std::string& output) {
  static const std::regex form(
      R"(  t=(\S+)  主 (\S+)  画中画 (\S+)  想要 (\S+)  漂移 ([+-]\S+)  按现实现(?:有|无)  按摄像头钟(?:有|无)\n)");
  std::vector<Row> rows;
  for (std::sregex_iterator row(output.begin(), output.end(), form), end; row != end; ++row) {
    const auto number = [&](std::size_t field) { return std::stod((*row)[field]); };
    rows.push_back({.time = number(1),
                    .main = number(2),
                    .camera = number(3),
                    .wanted = number(4),
                    .drift = number(5)});
  }
  return rows;
}

/// The number that stands behind a text; −1 when it does not occur.
double numberBehind(const std::string& output, const std::string& text) {
  const auto found = output.find(text);
  return found == std::string::npos ? -1 : std::stod(output.substr(found + text.size()));
}

constexpr const char* newByOffset = "  按当前实现（主时钟＋偏移）取到新帧：";
constexpr const char* newByCameraClock = "  改用摄像头播放器自己的时钟：      ";
/// A picture of the camera stands for 1/30 s, and it must not be missing for longer.
constexpr double largestDrift = 0.1;

// Where there is no sound server the players run all the same, and that nothing is heard is told.
TEST(CameraSync, theCameraFollowsTheScreen) {
  const test::VeskProcess process;
  const auto result = diagnose(process, putTake(process).string());
  EXPECT_THAT(result.output,
              AllOf(HasSubstr(" 画中画同步诊断 · take.recording\n"),
                    HasSubstr("  素材时长 10.00s   cameraOffset 0.412s\n"),
                    HasSubstr("    ✓ 轨道摆放正常（时长没被顶长、没有空洞）\n"),
                    HasSubstr("  micOffset 0.183s   mic.m4a 存在\n"), HasSubstr("偏差 0.0"),
                    HasSubstr("  ✓ 2 条音频轨（系统音 + 麦克风）\n"),
                    HasSubstr("  ✗ 主播放器没在正常出声\n"), HasSubstr("次（约 6 秒播放）\n"),
                    Not(HasSubstr("✗ 符号")), Not(HasSubstr("麦克风没"))));
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_LT(numberBehind(result.output, "画中画最大漂移 "), largestDrift) << result.output;
  constexpr double cameraOffset = 0.412;
  const std::vector<Row> rows = rowsIn(result.output);
  ASSERT_GE(rows.size(), 8U) << result.output;
  for (const Row& row : rows) {
    EXPECT_NEAR(row.main, row.time, largestDrift);
    EXPECT_NEAR(row.wanted, std::max(row.time - cameraOffset, 0.0), 0.006);
    EXPECT_NEAR(row.camera, row.wanted, largestDrift);
    EXPECT_NEAR(row.drift, row.camera - row.wanted, 0.0011);
  }
  EXPECT_GT(rows.back().camera, 3);
  // The camera shows 30 pictures a second, of which a busy machine may miss some.
  for (const char* const way : {newByOffset, newByCameraClock}) {
    EXPECT_GT(numberBehind(result.output, way), 60) << result.output;
    EXPECT_LT(numberBehind(result.output, way), 190) << result.output;
  }
}

TEST(CameraSync, allIsWellWhereTheTakeIsHeard) {
  const capture::pipewire::test::TestSoundServer server;
  const capture::pipewire::test::VirtualSink sink(server.remote(), "sink", "音箱");
  const test::VeskProcess process;
  const auto result =
      diagnose(process, putTake(process).string(),
               {"PIPEWIRE_RUNTIME_DIR=" + fs::path(server.remote()).parent_path().string()});
  EXPECT_THAT(result.output,
              AllOf(HasSubstr("  主播放器  rate=1  volume=1  muted=false  轨道数=2  状态=就绪\n"),
                    Not(HasSubstr("✗"))));
  EXPECT_EQ(result.exitCode, 0);
}

TEST(CameraSync, aTakeThatEndsEarlierIsPlayedToItsEnd) {
  const test::VeskProcess process;
  const auto result = diagnose(process, putTake(process, 1.2).string());
  const std::vector<Row> rows = rowsIn(result.output);
  ASSERT_GE(rows.size(), 2U) << result.output;
  EXPECT_LE(rows.back().time, 1.2);
  EXPECT_GT(numberBehind(result.output, "  采样 "), 0);
  EXPECT_THAT(result.output, HasSubstr("  ✓ 2 条音频轨（系统音 + 麦克风）\n"));
}

TEST(CameraSync, aTakeWithoutALengthPlaysNothing) {
  const test::VeskProcess process;
  const auto result = diagnose(process, putTake(process, 0).string());
  EXPECT_THAT(result.output,
              AllOf(HasSubstr("\n\n  ✗ 拿不到主播放器状态\n"), HasSubstr("  采样 0 次"),
                    Not(HasSubstr("主播放器  rate")), Not(HasSubstr("麦克风没并进来"))));
  EXPECT_TRUE(rowsIn(result.output).empty());
  EXPECT_EQ(result.exitCode, 1);
}

TEST(CameraSync, aCameraFromOutsideThePackageIsNotMeasured) {
  const test::VeskProcess process;
  const fs::path take = putTake(process, 1.2);
  fs::rename(take / "camera.mov", process.home() / "camera.mov");
  fs::create_symlink(process.home() / "camera.mov", take / "camera.mov");
  const auto result = diagnose(process, take.string());
  EXPECT_THAT(result.output,
              AllOf(HasSubstr("  ✗ 录制包里没有可用的 camera.mov\n"), Not(HasSubstr("末尾映射"))));
  EXPECT_EQ(numberBehind(result.output, newByOffset), 0);
  EXPECT_EQ(numberBehind(result.output, newByCameraClock), 0);
  EXPECT_EQ(result.exitCode, 1);
}

TEST(CameraSync, aCameraThatCannotBeReadIsAFailure) {
  const test::VeskProcess process;
  const fs::path take = putTake(process, 1.2);
  process.home().put("take.recording/camera.mov", "no movie");
  const auto result = diagnose(process, take.string());
  EXPECT_THAT(result.output, AllOf(HasSubstr("camera.mov"), Not(HasSubstr("末尾映射"))));
  EXPECT_THAT(result.output, HasSubstr("存在\n  ✗ "));
  EXPECT_EQ(result.exitCode, 1);
}

TEST(CameraSync, theMicrophoneStandsWhereItIsPlayed) {
  const test::VeskProcess process;
  const fs::path take = putTake(process, 1.2);
  auto meta = nlohmann::json::parse(process.home().contents("take.recording/meta.json"));
  // Before the screen: its first part is left out, and it plays from the start.
  meta["micFirstSamplePTS"] = meta["firstFramePTS"].get<double>() - 0.25;
  process.home().put("take.recording/meta.json", meta.dump());
  EXPECT_THAT(diagnose(process, take.string()).output,
              HasSubstr("  micOffset 0.000s   mic.m4a 存在\n"));
}

TEST(CameraSync, aSlashBehindThePackageIsNoPartOfItsName) {
  const test::VeskProcess process;
  EXPECT_THAT(diagnose(process, putTake(process, 0).string() + "/").output,
              HasSubstr(" 画中画同步诊断 · take.recording\n"));
}

}  // namespace
}  // namespace vesk::app
