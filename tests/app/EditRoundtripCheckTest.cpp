#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "app/EditRoundtripCheck.h"
#include "app/VeskProcess.h"
#include "editor/SessionStage.h"
#include "motion/ReportText.h"

namespace vesk::app {
namespace {

using testing::AllOf;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;

std::string head() {
  return motion::ruler() + "\n 编辑意图往返自检（走真实 open 路径）\n" + motion::ruler() + "\n";
}

TEST(EditRoundtripCheck, passesAgainAndAgain) {
  const test::VeskProcess process;
  for (int run = 0; run < 2; ++run) {
    const auto result = process.run({"--test-edit-roundtrip"});
    EXPECT_EQ(result.exitCode, 0);
    EXPECT_EQ(result.output, head() +
                                 "  首次打开        2 段（算法推断）\n"
                                 "  编辑后          1 段（改了 1 段的强度/焦点，删了 1 段）\n"
                                 "  重开后          1 段\n" +
                                 motion::ruler() + "\n  ✓ 段编辑活过了一次重开\n\n");
  }
}

TEST(EditRoundtripCheck, withoutATemporaryFolderThereIsNoPackage) {
  const test::VeskProcess process;
  const auto result =
      process.run({"--test-edit-roundtrip"}, {.output = {}, .temporary = "/dev/null"});
  EXPECT_EQ(result.exitCode, 1);
  EXPECT_EQ(result.output, head() + "  ✗ 无法创建合成包\n");
}

/// A session that lost its edit in one way or another.
class ReopeningTest : public editor::test::SessionStage {
 protected:
  ReopeningTest() : session_(makeSession()) {
    session_->open(putMarkedTake());
    edited_.inferred = 2;
    edited_.editedID = session_->timeline().segments.at(0).id;
    edited_.deletedID = session_->timeline().segments.at(1).id;
    session_->changeSegment(edited_.editedID, [&](motion::ZoomSegment& segment) {
      segment.level = values_.level;
      segment.focus = values_.focus;
    });
    session_->deleteSegment(edited_.deletedID);
    session_->changeVolumes(values_.systemVolume, values_.micVolume);
    edited_.kept = 1;
  }

  std::vector<std::string> failures() const {
    return reopeningFailures(*session_, edited_, values_);
  }

  EditedValues values_;
  EditedTake edited_;
  std::unique_ptr<editor::PreviewController> session_;
};

TEST_F(ReopeningTest, anEditThatIsThereHasNoFailures) {
  EXPECT_THAT(failures(), IsEmpty());
}

TEST_F(ReopeningTest, anEditThatTheInferenceReplacedFailsInMostWays) {
  session_->regenerate();
  EXPECT_THAT(
      failures(),
      ElementsAre("段数 期望 1，实际 2（等于算法推断值——段被 regenerate 覆盖了）",
                  "删掉的段又回来了（id=" + edited_.deletedID + "）", "强度 期望 3.400，实际 2.000",
                  "焦点 期望 (0.110,0.220)，实际 (0.300,0.300)",
                  "重开后 hasManualEdits 为 false，时间轴不会显示「已手动编辑」"));
}

TEST_F(ReopeningTest, aLostSegmentIsNamed) {
  session_->deleteSegment(edited_.editedID);
  EXPECT_THAT(failures(), ElementsAre("段数 期望 1，实际 0",
                                      "改过的段找不到了（id=" + edited_.editedID + "）"));
}

TEST_F(ReopeningTest, volumesThatWereForgottenAreNamed) {
  session_->changeVolumes(1, 1);
  EXPECT_THAT(failures(),
              ElementsAre("系统音量 期望 0.370，实际 1.000", "人声音量 期望 1.620，实际 1.000"));
}

}  // namespace
}  // namespace vesk::app
