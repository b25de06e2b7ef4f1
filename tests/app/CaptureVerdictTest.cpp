#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/SmokeRecordCommand.h"
#include "app/StaticTailCommand.h"
#include "app/WindowFramesCommand.h"
#include "app/WindowResizeCommand.h"
#include "capture/fake/FakeDisplayGeometry.h"

namespace vesk::app {
namespace {

using capture::ScreenSize;
using package::RecordedEvent;
using testing::HasSubstr;
using testing::Not;
using Kind = RecordedEvent::Kind;

TEST(StaticTailVerdict, aMovieThatIsTooShortFails) {
  const auto outcome = staticTailVerdict(0.51, 3);
  EXPECT_EQ(outcome.text, "  ✗ 成片比实际录制短 0.51s —— 静态画面的尾巴没补上\n");
  EXPECT_EQ(outcome.exitCode, 1);
}

TEST(StaticTailVerdict, aTailThatWasFilledPasses) {
  const auto outcome = staticTailVerdict(0.5, 0.11);
  EXPECT_EQ(outcome.text, "  ✓ 通过（本次末尾确实静止过，尾巴被补齐了）\n");
  EXPECT_EQ(outcome.exitCode, 0);
}

TEST(StaticTailVerdict, aScreenThatNeverStoodStillIsAWeakPass) {
  const auto outcome = staticTailVerdict(0.1, 0.1);
  EXPECT_THAT(outcome.text, HasSubstr("必要不充分"));
  EXPECT_EQ(outcome.exitCode, 0);
}

TEST(StaticTailReport, aScreenThatMovedThroughoutIsWarnedOf) {
  const auto text = staticTailReport({.completeFrames = 60});
  EXPECT_THAT(text, HasSubstr("  帧统计  写入 60   idle 0   丢 0\n"));
  EXPECT_THAT(text, HasSubstr("全程没有 idle 帧"));
}

TEST(StaticTailReport, aScreenThatStoodStillHasItsTail) {
  const auto text = staticTailReport(
      {.completeFrames = 2, .idleFrames = 58, .lastCompletePTS = 10.0, .lastAnyPTS = 13.5});
  EXPECT_THAT(text, HasSubstr("  最后一次画面变化 10.000   最后收到帧 13.500   静态尾巴 3.500s\n"));
  EXPECT_THAT(text, Not(HasSubstr("idle 帧")));
}

constexpr ScreenSize small{.width = 400, .height = 300};

TEST(WindowResizeVerdict, aWindowThatKeptItsSizeIsAWeakPass) {
  const auto outcome = windowResizeVerdict(small, {.width = 401, .height = 300}, 0);
  EXPECT_THAT(outcome.text, HasSubstr("必要不充分"));
  EXPECT_EQ(outcome.exitCode, 0);
}

TEST(WindowResizeVerdict, aResizeThatWasNoticedPasses) {
  const auto outcome = windowResizeVerdict(small, {.width = 500, .height = 300}, 2);
  EXPECT_EQ(outcome.text, "  ✓ 窗口尺寸变化被 contentRect 记录到了（2 次）\n");
  EXPECT_EQ(outcome.exitCode, 0);
}

TEST(WindowResizeVerdict, aResizeThatWasMissedFails) {
  const auto outcome = windowResizeVerdict(small, {.width = 400, .height = 200}, 0);
  EXPECT_THAT(outcome.text, HasSubstr("采集侧完全没跟上"));
  EXPECT_EQ(outcome.exitCode, 1);
}

RecordedEvent moveAt(double t, double x, double y) {
  RecordedEvent event{.t = t, .type = Kind::move};
  event.x = x;
  event.y = y;
  return event;
}

SmokeEvidence evidence() {
  return {.expected = {.width = 400, .height = 300},
          .actual = {.width = 400, .height = 300},
          .probes = {{.place = {.x = 0.5, .y = 0.5}, .leftAt = 1},
                     {.place = {.x = 0.1, .y = 0.2}, .leftAt = 2}}};
}

TEST(SmokeRecordVerdict, probesThatWereLoggedWhereTheyWerePass) {
  const auto outcome =
      judgeSmokeRecord(evidence(), {moveAt(0.5, 0.5, 0.5), moveAt(1.5, 0.1, 0.21)});
  EXPECT_EQ(outcome.exitCode, 0) << outcome.text;
  EXPECT_THAT(outcome.text, HasSubstr("  画面尺寸  期望 400×300  实际 400×300  ✓\n"));
  EXPECT_THAT(outcome.text, HasSubstr("  光标采样  2 个，越界 0 个  ✓\n"));
  EXPECT_THAT(outcome.text, HasSubstr("    探针 (0.10,0.20) → 记录 (0.100,0.210)  偏差 0.0100\n"));
  EXPECT_THAT(outcome.text, HasSubstr("  归一化映射  最大偏差 0.0100  ✓ 坐标落在正确的范围里\n"));
}

TEST(SmokeRecordVerdict, aPictureOfAnotherSizeFails) {
  auto wrong = evidence();
  wrong.actual.width = 800;
  const auto outcome = judgeSmokeRecord(wrong, {moveAt(0.5, 0.5, 0.5), moveAt(1.5, 0.1, 0.2)});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.text, HasSubstr("✗ 范围裁剪没生效"));
}

TEST(SmokeRecordVerdict, aSampleOutsideThePictureFails) {
  const auto outcome = judgeSmokeRecord(
      evidence(), {moveAt(0.5, 0.5, 0.5), moveAt(1.2, 1.002, 0), moveAt(1.5, 0.1, 0.2)});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.text, HasSubstr("越界 1 个  ✗ 归一化用错了矩形"));
}

TEST(SmokeRecordVerdict, aProbeElsewhereFails) {
  const auto outcome = judgeSmokeRecord(evidence(), {moveAt(0.5, 0.5, 0.5), moveAt(1.5, 0.1, 0.8)});
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.text, HasSubstr("✗ 映射错了，检查归一化用的矩形"));
}

TEST(SmokeRecordVerdict, aTakeWithoutProbesProvesNothing) {
  auto none = evidence();
  none.probes.clear();
  EXPECT_EQ(judgeSmokeRecord(none, {}).exitCode, 1);
}

class WindowFrames : public testing::Test {
 protected:
  void open(std::uint32_t id, const package::Rect& frame) {
    geometry_.putWindow({.id = id,
                         .title = "窗口",
                         .owner =
                             capture::ScreenWindow::Owner{
                                 .applicationID = "a", .applicationName = "编辑器", .processID = 1},
                         .frame = frame});
  }

  capture::fake::FakeDisplayGeometry geometry_;
};

TEST_F(WindowFrames, withoutADisplayNothingCanBeChecked) {
  geometry_.setDisplays({});
  EXPECT_THAT(checkWindowFrames(geometry_).text, HasSubstr("  ✗ 拿不到任何屏幕"));
  EXPECT_EQ(checkWindowFrames(geometry_).exitCode, 1);
}

TEST_F(WindowFrames, withoutAWindowNothingCanBeChecked) {
  const auto outcome = checkWindowFrames(geometry_);
  EXPECT_THAT(outcome.text, HasSubstr("  ✗ 没有可检查的窗口"));
  EXPECT_EQ(outcome.exitCode, 1);
}

TEST_F(WindowFrames, aSingleDisplayGivesAWeakPass) {
  open(1, {10, 10, 300, 200});
  const auto outcome = checkWindowFrames(geometry_);
  EXPECT_EQ(outcome.exitCode, 0);
  EXPECT_THAT(outcome.text, HasSubstr("  屏0  x=0 y=0 1920×1080  (主)\n"));
  EXPECT_THAT(outcome.text, HasSubstr("必要不充分"));
}

TEST_F(WindowFrames, aDisplayAboveThePrimaryOneTellsApart) {
  geometry_.setDisplays(
      {{.id = 1, .frame = {0, 800, 1600, 1000}}, {.id = 2, .frame = {0, 0, 1600, 800}}});
  open(1, {10, 10, 300, 200});
  open(2, {10, 1500, 300, 200});
  const auto outcome = checkWindowFrames(geometry_);
  EXPECT_EQ(outcome.exitCode, 0) << outcome.text;
  EXPECT_THAT(outcome.text, HasSubstr("相差 800\n"));
  EXPECT_THAT(outcome.text, HasSubstr("  ✓ 通过（本机布局有鉴别力）\n"));
}

TEST_F(WindowFrames, aWindowOffEveryDisplayFails) {
  open(1, {10, 10, 300, 200});
  open(2, {10, 5000, 300, 200});
  const auto outcome = checkWindowFrames(geometry_);
  EXPECT_EQ(outcome.exitCode, 1);
  EXPECT_THAT(outcome.text, HasSubstr("  检查了 2 个窗口，飘出屏幕 1\n"));
  EXPECT_THAT(outcome.text,
              HasSubstr("  ✗ 编辑器  CG(10,5000 300×200) → AppKit y=-4120 不在任何屏幕上\n"));
}

TEST_F(WindowFrames, tinyWindowsAreNotLookedAt) {
  open(1, {10, 10, 300, 200});
  open(2, {9000, 9000, 1, 1});
  EXPECT_EQ(checkWindowFrames(geometry_).exitCode, 0);
}

}  // namespace
}  // namespace vesk::app
