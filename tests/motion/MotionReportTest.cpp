#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cmath>
#include <locale>
#include <nlohmann/json.hpp>
#include <sstream>

#include "motion/MotionCriteria.h"
#include "motion/MotionReport.h"
#include "motion/ReportText.h"
#include "motion/TakeBuilder.h"

namespace vesk::motion {
namespace {

using Json = nlohmann::ordered_json;
using ::testing::ElementsAre;
using ::testing::EndsWith;
using ::testing::HasSubstr;
using ::testing::Not;
using ::testing::StartsWith;

/// Marks with a pan and a reset, one click, and a cursor that goes where they are.
package::RecordingProject markedTake() {
  std::vector<package::RecordedEvent> events{
      test::move(0, 0.5, 0.5),    test::zoomIn(2, 0.2, 0.3), test::move(2, 0.2, 0.3),
      test::move(4.9, 0.2, 0.3),  test::zoomIn(5, 0.7, 0.6), test::move(5.4, 0.7, 0.6),
      test::zoomOut(8, 0.7, 0.6), test::click(11, 0.4, 0.4), test::move(11, 0.4, 0.4),
      test::appChange(11.1),
  };
  package::RecordingProject project = test::take(15, std::move(events));
  project.url = "/tmp/演示 \"一\".recording";
  project.meta.captureWidth = 1280;
  project.meta.captureHeight = 800;
  project.meta.scaleFactor = 1.5;
  return project;
}

struct Report {
  DumpCtx context;
  MotionCriteria measured;

  explicit Report(package::RecordingProject project, const ReportOptions& options = {})
      : context(makeDumpCtx(std::move(project), options)), measured(measureCriteria(context)) {}

  std::string text() const { return reportText(context, measured); }
  Json json() const { return Json::parse(reportJson(context, measured)); }
  int exitCode() const { return reportExitCode(context, measured); }
};

ReportOptions gated() {
  ReportOptions options;
  options.gate = true;
  return options;
}

std::vector<std::string> linesOf(const std::string& text) {
  std::vector<std::string> lines;
  std::istringstream stream(text);
  for (std::string line; std::getline(stream, line);) {
    lines.push_back(line);
  }
  return lines;
}

}  // namespace

TEST(ReportText, padsByCharacters) {
  EXPECT_EQ(padded("档位", 6), "档位    ");
  EXPECT_EQ(padded("abcdefg", 6), "abcdefg");
  EXPECT_EQ(padded("", 2), "  ");
}

TEST(DumpCtx, takesTheAspectOfThePictureOrSixteenToNine) {
  EXPECT_DOUBLE_EQ(Report(markedTake()).context.camAspect, 1.6);
  EXPECT_DOUBLE_EQ(Report(test::take(3, {})).context.camAspect, 16.0 / 9);
}

TEST(MotionReport, opensWithTheRecording) {
  const std::vector<std::string> lines = linesOf(Report(markedTake()).text());
  EXPECT_EQ(lines[0], ruler());
  EXPECT_EQ(lines[1], " 运镜报告  演示 \"一\".recording");
  EXPECT_EQ(lines[2], "  1280×800 @ 60fps   时长 15.00s   scale 1.5");
  EXPECT_EQ(lines[3], "  事件 10   点击 1   按键 0   窗口切换 1   断流 0");
  EXPECT_EQ(lines[4], "  手动镜头标记  放大 2   还原 1");
}

TEST(MotionReport, namesAPackageGivenWithATrailingSlash) {
  package::RecordingProject project = markedTake();
  project.url = "/tmp/tour.recording/";
  EXPECT_EQ(linesOf(Report(project).text())[1], " 运镜报告  tour.recording");
}

TEST(MotionReport, leavesTheMarksOutWhenThereAreNone) {
  EXPECT_THAT(Report(test::take(9, {test::click(3)})).text(), Not(HasSubstr("手动镜头标记")));
}

TEST(MotionReport, comparesTheThreeLevels) {
  EXPECT_THAT(Report(markedTake()).text(),
              HasSubstr("\n▸ 智能分级（三档对比）\n"
                        "  档位     段数     覆盖率      静默阈值      \n"
                        "  保守       2        58%        1.5s      \n"
                        "  标准       2        58%        0.8s      \n"
                        "  密集       2        58%        0.4s      \n"));
}

TEST(MotionReport, marksALevelThatIsTooDense) {
  const Report report(test::take(10, {test::zoomIn(1)}));
  EXPECT_THAT(report.text(), HasSubstr("92%        0.8s        ← 过密\n"));
}

TEST(MotionReport, listsTheSegmentsAndHowTheyFollowEachOther) {
  EXPECT_THAT(
      Report(markedTake()).text(),
      HasSubstr("\n▸ 标准档段详情\n"
                "  #   起止              时长    倍数   焦点            与上段\n"
                "  1     1.85→8.55     6.70s  2.00×  (0.200,0.300)  [手动] \n"
                "  2    10.65→12.70    2.05s  2.00×  (0.400,0.400)  [自动] 手动还原→归位\n"));
}

TEST(MotionReport, namesTheRelationOfNeighbours) {
  const auto relation = [](double secondStart, double secondX) {
    const Report report(
        test::take(20, {test::click(3, 0.1, 0.5), test::click(secondStart + 0.35, secondX, 0.5)}));
    return linesOf(report.text()).at(14);
  };
  // The first segment is 2.65→4.70.
  EXPECT_THAT(relation(5.7, 0.4), EndsWith("[自动] 连续(间隔1.00s)"));
  EXPECT_THAT(relation(5.7, 0.8), EndsWith("[自动] 强制归位(相距0.70)"));
  EXPECT_THAT(relation(7.7, 0.8), EndsWith("[自动] 归位(间隔3.00s)"));
}

TEST(MotionReport, showsWhereEachMarkPutsTheCamera) {
  ReportOptions options;
  options.camera3D.yaw = 20;
  EXPECT_THAT(Report(markedTake(), options).text(),
              HasSubstr("\n▸ 标记点 → 机位（yaw 正 = 相机在右侧）\n"
                        "  段  时刻      标记点位置        方位角     机位\n"
                        "  1     2.30s  推近 (0.200,0.300)  -20.00°   左侧拍\n"
                        "  1     5.00s  平移 (0.700,0.600)  +17.92°   右侧拍\n"
                        "  2    11.21s  推近 (0.400,0.400)   -7.04°   左侧拍\n"));
}

TEST(MotionReport, aMarkOnTheMiddleIsShotFromTheFront) {
  EXPECT_THAT(Report(test::take(9, {test::click(3)})).text(), HasSubstr("+0.00°   正面\n"));
}

TEST(MotionReport, namesTheCurve) {
  ReportOptions options;
  options.ease = CameraEase::cinema;
  EXPECT_THAT(Report(markedTake(), options).text(),
              HasSubstr("\n▸ 过渡曲线：电影 —— 起收都慢，大幅运镜显得从容\n"));
}

TEST(MotionReport, printsTheProfileOnlyOnDemand) {
  EXPECT_THAT(Report(markedTake()).text(), Not(HasSubstr("推镜曲线剖面")));
  ReportOptions options;
  options.easeProfile = true;
  const std::string text = Report(markedTake(), options).text();
  EXPECT_THAT(text, HasSubstr("\n▸ 推镜曲线剖面（平稳）  1.85→2.30s\n     +0ms  1.00"));
  EXPECT_THAT(text, HasSubstr("\n   +450ms  1.9"));
  EXPECT_THAT(text, Not(HasSubstr("+500ms")));
  EXPECT_THAT(Report(test::take(9, {}), options).text(), Not(HasSubstr("推镜曲线剖面")));
}

TEST(MotionReport, printsTheFramingFourTimesALine) {
  const std::string text = Report(test::take(2.2, {})).text();
  EXPECT_THAT(text, HasSubstr("\n▸ 相机轨道（每 0.5s 采样，zoom / center）\n"
                              "    0.0s:1.00×   0.5s:1.00×   1.0s:1.00×   1.5s:1.00× \n"
                              "    2.0s:1.00× \n"
                              "\n  0.5s 内最大缩放变化 0.000×  \n"));
}

TEST(MotionReport, endsEachMeasureInItsWord) {
  const std::string text = Report(markedTake()).text();
  EXPECT_THAT(text, HasSubstr(" 画面/秒）@ "));
  EXPECT_THAT(text, HasSubstr("s  ✓ 正常\n  推镜期视口边缘折返 0 次  ✓"));
  EXPECT_THAT(text, HasSubstr("  ✓ 同步，共用同一条曲线\n  到位后 0.35s 内额外位移 "));
  EXPECT_THAT(text, HasSubstr("  手动还原标记 1 个，结束时未回整屏 0 个  ✓ 按还原键即回到整屏\n"
                              "  拉回期视口边缘折返 0 次  ✓ 单调外扩，还原干脆\n"
                              "  跟踪期指针跑出视口 0 帧（接管滑行期另计 0 帧）  ✓ 稳定后始终可见\n"
                              "  指针离视口中心最大偏离 "));
  EXPECT_THAT(text, HasSubstr("（0.5=贴边）  ✓ 保持在视口内\n  处于移动区的帧占比 "));
  EXPECT_THAT(text, HasSubstr("%（越低说明镜头越少动）\n\n▸ 推镜期明细（段 "));
}

TEST(MotionReport, theDetailMarksTheWorstFrame) {
  const Report report(markedTake());
  ASSERT_TRUE(report.measured.worstEaseIn);
  int marked = 0;
  const std::string text = report.text();
  const std::size_t detail = text.find("▸ 推镜期明细");
  for (const std::string& line : linesOf(text.substr(detail, text.find("最大速度突变") - detail))) {
    marked += line.ends_with("  ←") ? 1 : 0;
  }
  EXPECT_EQ(marked, 1);
}

TEST(MotionReport, saysSoWhenNothingFails) {
  EXPECT_THAT(
      Report(markedTake()).text(),
      EndsWith(ruler() + "\n  ✓ 十条运镜判据全部达标（加 --gate 可让不达标时退出码变红）\n"));
  EXPECT_THAT(Report(markedTake(), gated()).text(),
              EndsWith(ruler() + "\n  ✓ 十条运镜判据全部达标\n"));
  EXPECT_EQ(Report(markedTake()).exitCode(), 0);
  EXPECT_EQ(Report(markedTake(), gated()).exitCode(), 0);
}

TEST(MotionReport, aTakeWithoutSegmentsWarnsAndFailsTheGate) {
  const Report report(test::take(9, {}));
  EXPECT_THAT(report.text(), HasSubstr("\n  标准档没有产出效果段——点击太少或太分散。\n"
                                       "  ✗ 基准包没有产出任何效果段\n"));
  EXPECT_THAT(report.text(), EndsWith("  ✗ 1 条运镜判据不达标：\n"
                                      "      · 基准包没有产出任何效果段\n"
                                      "    （当前只是提示；加 --gate 会让退出码变 1）\n"));
  EXPECT_EQ(report.exitCode(), 0);
  const Report withGate(test::take(9, {}), gated());
  EXPECT_THAT(withGate.text(), EndsWith("      · 基准包没有产出任何效果段\n"));
  EXPECT_EQ(withGate.exitCode(), 1);
}

TEST(MotionReport, aJumpOfSpeedIsBrokenDownButKeepsTheGateOpen) {
  Report report(markedTake(), gated());
  // A hard cut in an otherwise finished track, long after the last segment.
  for (std::size_t i = 800; i < report.context.track.samples.size(); ++i) {
    report.context.track.samples[i] = CameraPose{.framing = 1.08};
  }
  report.measured = measureCriteria(report.context);
  const std::string text = report.text();
  EXPECT_THAT(text,
              HasSubstr("  ← 存在硬切，检查关键帧生成\n"
                        "    （已知可接受：光标本身的抖动会传导到镜头。压它要牺牲跟随性，见 "
                        "§3.2.2）\n\n▸ 最差点附近逐帧分解\n"
                        "      时刻     zoom      center            视口左上         Δ视口\n"));
  EXPECT_THAT(text,
              HasSubstr("   13.3333s  1.0800  (0.5000,0.5000)  (0.0370,0.0370)  0.0524  ←\n"));
  EXPECT_EQ(report.exitCode(), 0);
}

TEST(MotionReport, isTheSameUnderEveryLocale) {
  struct Comma : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
  };
  const Report report(markedTake());
  const std::string text = report.text();
  const std::string json = reportJson(report.context, report.measured);
  const std::locale before = std::locale::global(std::locale(std::locale(), new Comma));
  const std::string otherText = report.text();
  const std::string otherJson = reportJson(report.context, report.measured);
  std::locale::global(before);
  EXPECT_EQ(otherText, text);
  EXPECT_EQ(otherJson, json);
}

TEST(MotionReportJson, isOneLineWithItsKeysInOrder) {
  const Report report(markedTake());
  const std::string text = reportJson(report.context, report.measured);
  EXPECT_EQ(text.find('\n'), text.size() - 1);
  const Json json = Json::parse(text);
  const auto keysOf = [](const Json& object) {
    std::vector<std::string> keys;
    for (const auto& [key, value] : object.items()) {
      keys.push_back(key);
    }
    return keys;
  };
  EXPECT_THAT(keysOf(json), ElementsAre("segments", "coverage", "track", "criteria", "failures"));
  EXPECT_THAT(keysOf(json["segments"]), ElementsAre("保守", "标准", "密集"));
  EXPECT_THAT(keysOf(json["coverage"]), ElementsAre("保守", "标准", "密集"));
  EXPECT_THAT(keysOf(json["track"]), ElementsAre("t0", "step", "samples"));
  EXPECT_THAT(keysOf(json["track"]["samples"][0]),
              ElementsAre("target", "yaw", "pitch", "roll", "fov", "framing", "motionBlur"));
  EXPECT_THAT(keysOf(json["criteria"][0]),
              ElementsAre("number", "name", "value", "limit", "at", "pass"));
  EXPECT_THAT(
      keysOf(json["segments"]["标准"][0]),
      ElementsAre("id", "start", "end", "enabled", "sourceClickTime", "level", "focus",
                  "followCursor", "deadzone", "followSpeed", "isManual", "endsWithExplicitReset",
                  "easeIn", "easeOut", "holdMin", "motionBlur", "waypoints", "panDuration"));
}

TEST(MotionReportJson, readsBackExactly) {
  ReportOptions options;
  options.camera3D.enabled = true;
  const Report report(markedTake(), options);
  const Json json = report.json();
  const CameraTrack& track = report.context.track;
  EXPECT_EQ(json["track"]["step"].get<double>(), track.step);
  ASSERT_EQ(json["track"]["samples"].size(), track.samples.size());
  for (std::size_t i = 0; i < track.samples.size(); ++i) {
    const Json& sample = json["track"]["samples"][i];
    const CameraPose& pose = track.samples[i];
    EXPECT_EQ(sample["target"][0].get<double>(), static_cast<double>(pose.target.x));
    EXPECT_EQ(sample["target"][1].get<double>(), static_cast<double>(pose.target.y));
    EXPECT_EQ(sample["yaw"].get<double>(), pose.yaw);
    EXPECT_EQ(sample["pitch"].get<double>(), pose.pitch);
    EXPECT_EQ(sample["framing"].get<double>(), pose.framing);
    EXPECT_EQ(sample["motionBlur"].get<double>(), pose.motionBlur);
  }
  for (std::size_t i = 0; i < 10; ++i) {
    const Json& criterion = json["criteria"][i];
    EXPECT_EQ(criterion["number"], i + 1);
    EXPECT_EQ(criterion["value"].get<double>(), report.measured.criteria[i].value);
    EXPECT_EQ(criterion["at"].is_null(), !report.measured.criteria[i].at.has_value());
  }
}

TEST(MotionReportJson, writesSegmentsWithTheirWaypoints) {
  const Json json = Report(markedTake()).json();
  const Json& segment = json["segments"]["标准"][0];
  EXPECT_EQ(segment["id"], "man_2000");
  EXPECT_EQ(segment["focus"][0].get<double>(), static_cast<double>(0.2F));
  EXPECT_EQ(segment["endsWithExplicitReset"], true);
  EXPECT_EQ(segment["waypoints"].dump(),
            R"([{"t":5,"focus":[0.699999988079071,0.6000000238418579]}])");
}

TEST(MotionReportJson, leavesOutAnAbsentClickTimeAndEscapesText) {
  Report report(markedTake());
  report.context.levels[1].segments[0].sourceClickTime.reset();
  report.context.levels[1].segments[0].id = "a\"b\\c\n";
  const Json segment = report.json()["segments"]["标准"][0];
  EXPECT_FALSE(segment.contains("sourceClickTime"));
  EXPECT_EQ(segment["id"], "a\"b\\c\n");
}

TEST(MotionReportJson, holdsAnEmptyTrackAndItsFailure) {
  const Json json = Report(test::take(9, {})).json();
  EXPECT_EQ(json["track"].dump(), R"({"t0":0,"step":0.016666666666666666,"samples":[]})");
  EXPECT_EQ(json["failures"].dump(), R"(["基准包没有产出任何效果段"])");
  EXPECT_EQ(json["criteria"][1].dump(),
            R"({"number":2,"name":"最大镜头速度","value":0,"limit":0.06,"at":null,"pass":true})");
}

TEST(MotionReportJson, neverHoldsANumberThatIsNone) {
  Report report(markedTake());
  report.measured.criteria[0].value = std::nan("");
  report.measured.criteria[1].value = HUGE_VAL;
  const Json json = report.json();
  EXPECT_TRUE(json["criteria"][0]["value"].is_null());
  EXPECT_TRUE(json["criteria"][1]["value"].is_null());
}

}  // namespace vesk::motion
