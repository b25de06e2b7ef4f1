#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cstdlib>
#include <filesystem>
#include <functional>

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

TEST_F(ReopeningTest, anUndoneChangeOfTheCameraWindowIsBackAndTold) {
  const int version = session_->documentVersion();
  session_->changeLook(
      [&](compositor::CompositeSettings& look) { look.pip.size = values_.cameraSize; });
  EXPECT_THAT(viewUndoFailures(*session_, version - 1, values_), IsEmpty());
  session_->changeLook([](compositor::CompositeSettings& look) { look.pip.size = 0.19; });
  EXPECT_THAT(viewUndoFailures(*session_, version, values_),
              ElementsAre("撤销后 documentVersion 没变，视图里的 @State "
                          "不会回读，画中画热区会停在旧位置，下次交互还会把陈旧值写回",
                          "撤销后画中画大小 期望 0.410，实际 0.190"));
}

TEST_F(ReopeningTest, aFollowSpeedBelongsIntoTheSegmentsAndInfersNothing) {
  EXPECT_THAT(followSpeedFailures(*session_, 1, edited_, values_),
              ElementsAre("改跟随速度没有写进段里"));
  session_->setFollowSpeedRaw(values_.followSpeed);
  session_->rebuildTrack();
  EXPECT_THAT(followSpeedFailures(*session_, 1, edited_, values_), IsEmpty());
  session_->deleteSegment(edited_.editedID);
  EXPECT_THAT(followSpeedFailures(*session_, 1, edited_, values_),
              ElementsAre("改跟随速度把段数从 1 变成了 0——它不该触发重新推断",
                          "改跟随速度之后，改过的段没了"));
}

TEST_F(ReopeningTest, anUndoneInferenceBringsTheEditBack) {
  EXPECT_THAT(regenerationUndoFailures(*session_, edited_, values_), IsEmpty());
  session_->changeSegment(edited_.editedID,
                          [](motion::ZoomSegment& segment) { segment.level = 2.5; });
  EXPECT_THAT(regenerationUndoFailures(*session_, edited_, values_),
              ElementsAre("撤销后强度没回来：2.500"));
  session_->deleteSegment(edited_.editedID);
  EXPECT_THAT(regenerationUndoFailures(*session_, edited_, values_),
              ElementsAre("改灵敏度丢掉了手工编辑，且撤销也拿不回来"));
}

/// The whole check, whose package suffers something before one of its two sessions opens it.
class EditRoundtripBreakOff : public editor::test::SessionStage {
 protected:
  EditRoundtripBreakOff() { ::setenv("TMPDIR", folder.path().c_str(), 1); }  // NOLINT: no threads
  ~EditRoundtripBreakOff() override { ::unsetenv("TMPDIR"); }                // NOLINT

  /// The package of the check, which alone bears such a name.
  std::filesystem::path take() const {
    for (const auto& entry : std::filesystem::directory_iterator(folder.path())) {
      if (entry.path().extension() == ".recording") return entry.path();
    }
    return {};
  }

  /// @param befall is told the number of each session that is about to open the package.
  CheckOutcome checkWith(const std::function<void(int, editor::PreviewController&)>& befall) {
    int number = 0;
    return checkEditRoundtrip({}, [&] {
      auto session = makeSession();
      befall(++number, *session);
      return session;
    });
  }
};

TEST_F(EditRoundtripBreakOff, whereNothingBefallsItThereIsNone) {
  EXPECT_EQ(checkWith([](int, auto&) {}).exitCode, 0);
}

TEST_F(EditRoundtripBreakOff, aPackageThatDoesNotOpenIsSaidSo) {
  const auto loseFor = [&](int number) {
    return checkWith([this, number](int session, auto&) {
      if (session == number) std::filesystem::remove(take() / "meta.json");
    });
  };
  const CheckOutcome first = loseFor(1);
  EXPECT_THAT(first.text, testing::StartsWith(head() + "  ✗ 第一次打开失败：打开失败："));
  EXPECT_EQ(first.exitCode, 1);
  const CheckOutcome second = loseFor(2);
  EXPECT_THAT(second.text, HasSubstr("\n  ✗ 第二次打开失败：打开失败："));
  EXPECT_EQ(second.exitCode, 1);
}

TEST_F(EditRoundtripBreakOff, withoutTwoSegmentsThereIsNothingToCheck) {
  const CheckOutcome outcome =
      checkWith([this](int, auto&) { std::filesystem::resize_file(take() / "events.jsonl", 0); });
  EXPECT_EQ(outcome.text,
            head() + "  首次打开        0 段（算法推断）\n  ✗ 合成包没产出至少 2 段，用例失效\n");
  EXPECT_EQ(outcome.exitCode, 1);
}

TEST_F(EditRoundtripBreakOff, aDocumentThatCannotBeWrittenIsSaidSo) {
  const CheckOutcome outcome = checkWith([this](int, editor::PreviewController& session) {
    QObject::connect(&session, &editor::PreviewController::projectChanged,
                     [this] { std::filesystem::remove_all(take()); });
  });
  EXPECT_THAT(outcome.text, testing::EndsWith("\n  ✗ edit.json 没落盘\n"));
  EXPECT_EQ(outcome.exitCode, 1);
}

TEST_F(EditRoundtripBreakOff, whatIsLostBetweenTheSessionsIsListed) {
  const CheckOutcome outcome = checkWith([this](int session, auto&) {
    if (session == 2) std::filesystem::remove(take() / "edit.json");
  });
  EXPECT_THAT(outcome.text, AllOf(HasSubstr("  重开后          2 段\n"), HasSubstr(" 项不符：\n"),
                                  HasSubstr("\n      · 段数 期望 1，实际 2（等于算法推断值——"),
                                  HasSubstr("\n      · 人声音量 期望 1.620，实际 1.000")));
  EXPECT_EQ(outcome.exitCode, 1);
}

}  // namespace
}  // namespace vesk::app
