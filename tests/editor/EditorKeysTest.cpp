#include <gtest/gtest.h>

#include <memory>

#include "editor/EditorKeys.h"
#include "editor/EditorUIState.h"
#include "editor/EditorView.h"
#include "editor/SessionStage.h"

namespace vesk::editor {
namespace {

class EditorKeys : public test::SessionStage {
 protected:
  bool press(Qt::Key key, Qt::KeyboardModifiers modifiers = Qt::NoModifier) {
    return keys.press(key, modifiers.toInt(), false);
  }
  bool hold(Qt::Key key) { return keys.press(key, Qt::NoModifier, true); }
  std::size_t segmentCount() const { return session->timeline().segments.size(); }

  std::unique_ptr<PreviewController> session = makeSession();
  EditorUIState ui;
  EditorView editor{*session, ui};
  vesk::editor::EditorKeys keys{*session, editor};
};

TEST_F(EditorKeys, withoutARecordingNoneDoesAnything) {
  for (const Qt::Key key :
       {Qt::Key_Space, Qt::Key_Left, Qt::Key_Right, Qt::Key_M, Qt::Key_Delete, Qt::Key_Backspace}) {
    EXPECT_FALSE(press(key)) << key;
  }
}

TEST_F(EditorKeys, theSpaceBarPlaysAndPauses) {
  session->open(putMarkedTake());
  EXPECT_TRUE(press(Qt::Key_Space));
  EXPECT_TRUE(session->isPlaying());
  EXPECT_TRUE(hold(Qt::Key_Space));
  EXPECT_TRUE(session->isPlaying());
  EXPECT_TRUE(press(Qt::Key_Space));
  EXPECT_FALSE(session->isPlaying());
}

TEST_F(EditorKeys, theArrowsStepByAPictureAndWithShiftByASecond) {
  session->open(putMarkedTake());
  session->seek(5);
  const double picture = 1.0 / session->project()->meta.fps;
  EXPECT_TRUE(press(Qt::Key_Right));
  EXPECT_NEAR(session->currentTime(), 5 + picture, 1e-9);
  EXPECT_TRUE(press(Qt::Key_Left, Qt::KeypadModifier));
  EXPECT_NEAR(session->currentTime(), 5, 1e-9);
  EXPECT_TRUE(press(Qt::Key_Right, Qt::ShiftModifier));
  EXPECT_NEAR(session->currentTime(), 6, 1e-9);
  EXPECT_TRUE(press(Qt::Key_Left, Qt::ShiftModifier));
  EXPECT_NEAR(session->currentTime(), 5, 1e-9);
}

TEST_F(EditorKeys, anArrowThatIsHeldStepsOn) {
  session->open(putMarkedTake());
  EXPECT_TRUE(hold(Qt::Key_Right));
  EXPECT_TRUE(hold(Qt::Key_Right));
  EXPECT_NEAR(session->currentTime(), 2.0 / session->project()->meta.fps, 1e-9);
}

TEST_F(EditorKeys, mAddsASegmentAtThePlayheadOnce) {
  session->open(putTake("take", {}));
  session->seek(10);
  EXPECT_TRUE(press(Qt::Key_M));
  EXPECT_EQ(segmentCount(), 1U);
  session->seek(1);
  EXPECT_TRUE(hold(Qt::Key_M));
  EXPECT_EQ(segmentCount(), 1U);
}

TEST_F(EditorKeys, deleteAndBackspaceDeleteTheSelectedSegment) {
  session->open(putMarkedTake());
  const std::size_t before = segmentCount();
  ASSERT_GE(before, 2U);
  for (const Qt::Key key : {Qt::Key_Delete, Qt::Key_Backspace}) {
    ui.setSelectedSegmentID(QString::fromStdString(session->timeline().segments.front().id));
    EXPECT_TRUE(press(key));
  }
  EXPECT_EQ(segmentCount(), before - 2);
}

TEST_F(EditorKeys, withoutASelectionNothingIsDeleted) {
  session->open(putMarkedTake());
  const std::size_t before = segmentCount();
  EXPECT_FALSE(press(Qt::Key_Delete));
  EXPECT_EQ(segmentCount(), before);
}

TEST_F(EditorKeys, withAnotherModifierTheyBelongToSomeoneElse) {
  session->open(putMarkedTake());
  EXPECT_FALSE(press(Qt::Key_M, Qt::ControlModifier));
  EXPECT_FALSE(press(Qt::Key_Space, Qt::AltModifier));
  EXPECT_FALSE(press(Qt::Key_Left, Qt::ControlModifier));
  EXPECT_FALSE(press(Qt::Key_Right, Qt::ShiftModifier | Qt::MetaModifier));
  EXPECT_FALSE(press(Qt::Key_A));
}

TEST_F(EditorKeys, deleteWithAModifierDeletesNothing) {
  session->open(putMarkedTake());
  const std::size_t before = segmentCount();
  ui.setSelectedSegmentID(QString::fromStdString(session->timeline().segments.front().id));
  for (const Qt::KeyboardModifier modifier :
       {Qt::ShiftModifier, Qt::ControlModifier, Qt::AltModifier, Qt::MetaModifier}) {
    EXPECT_FALSE(press(Qt::Key_Delete, modifier)) << modifier;
    EXPECT_FALSE(press(Qt::Key_Backspace, modifier)) << modifier;
  }
  EXPECT_EQ(segmentCount(), before);
}

}  // namespace
}  // namespace vesk::editor
