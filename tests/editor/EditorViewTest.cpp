#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QTest>

#include "editor/EditorView.h"
#include "editor/SessionStage.h"

namespace vesk::editor::test {
namespace {

class EditorViewTest : public SessionStage {
 protected:
  EditorViewTest() : session_(makeSession()), view_(*session_, ui_) {
    package::RecordingMeta meta;
    meta.fps = 50;
    session_->open(putTake("take", {clickAt(8)}, 20, meta));
  }

  void select(const std::string& id) { ui_.setSelectedSegmentID(QString::fromStdString(id)); }

  std::unique_ptr<PreviewController> session_;
  EditorUIState ui_;
  EditorView view_;
};

TEST_F(EditorViewTest, showsTheTimeInHundredths) {
  session_->seek(12.345);
  EXPECT_EQ(view_.timeText().toStdString(), "00:12.34");
  EXPECT_EQ(view_.durationText().toStdString(), "00:20.00");
}

TEST_F(EditorViewTest, stepsByPicturesOfTheRecordingAndPauses) {
  session_->seek(2);
  session_->play();
  view_.stepFrames(1);
  EXPECT_FALSE(session_->isPlaying());
  EXPECT_DOUBLE_EQ(session_->currentTime(), 2.02);
  view_.stepFrames(-2);
  EXPECT_DOUBLE_EQ(session_->currentTime(), 1.98);
}

TEST_F(EditorViewTest, stepsBySecondsWithinTheRecording) {
  session_->seek(2.5);
  view_.stepSeconds(1);
  EXPECT_EQ(session_->currentTime(), 3.5);
  session_->seek(0.5);
  view_.stepSeconds(-1);
  EXPECT_EQ(session_->currentTime(), 0);
}

TEST_F(EditorViewTest, selectsTheSegmentThatItAdds) {
  session_->changeUseAutoDetection(false);
  session_->seek(15);
  view_.addSegmentAtPlayhead();
  EXPECT_EQ(ui_.selectedSegmentID().toStdString(), "user_15000");
  EXPECT_TRUE(view_.canDelete());
}

TEST_F(EditorViewTest, keepsTheSelectionWhereNothingCouldBeAdded) {
  session_->changeUseAutoDetection(false);
  session_->seek(15);
  view_.addSegmentAtPlayhead();
  session_->seek(15.2);
  view_.addSegmentAtPlayhead();
  EXPECT_EQ(ui_.selectedSegmentID().toStdString(), "user_15000");
  EXPECT_EQ(session_->timeline().segments.size(), 1U);
}

TEST_F(EditorViewTest, deletingEndsTheSelection) {
  select(session_->timeline().segments.at(0).id);
  view_.deleteSelectedSegment();
  EXPECT_TRUE(session_->timeline().segments.empty());
  EXPECT_TRUE(ui_.selectedSegmentID().isEmpty());
  EXPECT_FALSE(view_.canDelete());
}

TEST_F(EditorViewTest, aSelectionMayOutliveItsSegment) {
  select("gone");
  EXPECT_FALSE(view_.canDelete());
  view_.deleteSelectedSegment();
  EXPECT_FALSE(session_->canUndo());
}

TEST_F(EditorViewTest, theCamerasWindowGoesToTheRendererAndIsSaved) {
  package::PiPSettings pip = ui_.pip();
  pip.size = 0.33;
  ui_.setPip(pip);
  EXPECT_EQ(session_->look().pip.size, 0.33);
  EXPECT_TRUE(QTest::qWaitFor(
      [&] { return std::filesystem::exists(session_->project()->url / "edit.json"); }));
}

TEST_F(EditorViewTest, anUndoneWindowComesBackToThePage) {
  session_->pushUndo(0);
  package::PiPSettings pip = ui_.pip();
  pip.size = 0.33;
  ui_.setPip(pip);
  session_->undo();
  EXPECT_EQ(ui_.pip().size, 0.22);
  EXPECT_EQ(session_->look().pip.size, 0.22);
}

TEST_F(EditorViewTest, openingTakesTheWindowOverWithoutSavingIt) {
  // Not as a save would write it.
  const std::string text = R"({"pip":{"size":0.4},"segments":[]})";
  const auto other = putTake("other", {}, 5);
  folder.put("library/other.recording/edit.json", text);
  session_->open(other);
  EXPECT_EQ(ui_.pip().size, 0.4);
  runEvents(PreviewController::saveDelay + std::chrono::milliseconds(150));
  EXPECT_EQ(folder.contents("library/other.recording/edit.json"), text);
}

TEST(EditorUIState, namesItsCategoriesByTheirTitles) {
  using Category = EditorUIState::Category;
  EXPECT_EQ(EditorUIState::rawValue(Category::cursor), "鼠标");
  EXPECT_EQ(EditorUIState::category("素材"), Category::source);
  EXPECT_EQ(EditorUIState::category("画中画"), Category::pip);
  EXPECT_EQ(EditorUIState::category("不存在"), std::nullopt);
}

}  // namespace
}  // namespace vesk::editor::test
