#include <gtest/gtest.h>

#include "editor/EditHistory.h"

namespace vesk::editor {
namespace {

using package::EditDocument;

std::function<EditDocument()> document(double followSpeed) {
  return [followSpeed] {
    EditDocument made;
    made.followSpeed = followSpeed;
    return made;
  };
}

int undoSteps(EditHistory& history) {
  int steps = 0;
  while (history.undo(document(0))) ++steps;
  return steps;
}

TEST(EditHistory, theThirtyFirstSnapshotPushesOutTheOldest) {
  EditHistory history;
  for (int edit = 0; edit < 31; ++edit) history.push(edit, 0, document(edit));
  std::optional<EditDocument> oldest;
  int steps = 0;
  while (auto entry = history.undo(document(-1))) {
    oldest = entry;
    ++steps;
  }
  EXPECT_EQ(steps, 30);
  EXPECT_EQ(oldest->followSpeed, 1);
}

TEST(EditHistory, discreteEditsMakeAStepEach) {
  EditHistory history;
  history.push(1, 0, document(1));
  history.push(1, 0, document(2));
  EXPECT_EQ(undoSteps(history), 2);
}

TEST(EditHistory, aGestureMakesOneStepHoweverLongItLasts) {
  EditHistory history;
  history.push(10.0, 0.5, document(1));
  history.push(10.3, 0.5, document(2));
  history.push(10.6, 0.5, document(3));
  EXPECT_EQ(undoSteps(history), 1);
}

TEST(EditHistory, aRestMakesTheNextChangeAStepOfItsOwn) {
  EditHistory history;
  history.push(10.0, 0.5, document(1));
  history.push(10.3, 0.5, document(2));
  history.push(10.9, 0.5, document(3));
  EXPECT_EQ(undoSteps(history), 2);
}

TEST(EditHistory, aChangeExactlyTheWindowLaterIsAStep) {
  EditHistory history;
  history.push(10.0, 0.5, document(1));
  history.push(10.5, 0.5, document(2));
  EXPECT_EQ(undoSteps(history), 2);
}

TEST(EditHistory, theFirstChangeAfterClearingIsAStepHoweverSoon) {
  EditHistory history;
  history.push(10.0, 0.5, document(1));
  history.clear();
  EXPECT_FALSE(history.canUndo());
  history.push(10.1, 0.5, document(2));
  EXPECT_EQ(history.undo(document(0))->followSpeed, 2);
}

TEST(EditHistory, goesBackAndForward) {
  EditHistory history;
  history.push(1, 0, document(1));
  EXPECT_EQ(history.undo(document(2))->followSpeed, 1);
  EXPECT_TRUE(history.canRedo());
  EXPECT_EQ(history.redo(document(1))->followSpeed, 2);
  EXPECT_FALSE(history.canRedo());
  EXPECT_EQ(history.undo(document(2))->followSpeed, 1);
}

TEST(EditHistory, aNewEditAfterAnUndoForgetsWhatWasUndone) {
  EditHistory history;
  history.push(1, 0, document(1));
  history.undo(document(2));
  history.push(2, 0, document(1));
  EXPECT_FALSE(history.canRedo());
  EXPECT_FALSE(history.redo(document(3)));
}

TEST(EditHistory, anEditSoonAfterAnUndoIsAStepToo) {
  EditHistory history;
  history.push(9.0, 0.5, document(1));
  history.push(10.0, 0.5, document(2));
  history.undo(document(3));
  history.push(10.3, 0.5, document(4));
  EXPECT_FALSE(history.canRedo());
  // From here on the gesture goes on as any other.
  history.push(10.6, 0.5, document(5));
  EXPECT_EQ(history.undo(document(6))->followSpeed, 4);
  EXPECT_EQ(history.undo(document(4))->followSpeed, 1);
}

TEST(EditHistory, takesASnapshotOnlyToRememberIt) {
  EditHistory history;
  int taken = 0;
  const auto counting = [&] {
    ++taken;
    return EditDocument();
  };
  history.push(1.0, 0.5, counting);
  history.push(1.1, 0.5, counting);
  EXPECT_EQ(taken, 1);
  EditHistory empty;
  EXPECT_FALSE(empty.undo(counting));
  EXPECT_FALSE(empty.redo(counting));
  EXPECT_EQ(taken, 1);
}

}  // namespace
}  // namespace vesk::editor
