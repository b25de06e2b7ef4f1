#include <gtest/gtest.h>

#include <filesystem>
#include <memory>

#include "editor/EditorUIState.h"
#include "editor/EditorView.h"
#include "editor/SessionStage.h"
#include "editor/StageOverlay.h"

namespace vesk::editor {
namespace {

/// A session with a real take, as the editor page has it.
class StageOverlay : public test::SessionStage {
 protected:
  StageOverlay() { overlay.setStageSize({800, 450}); }

  void openTake() {
    const auto take = folder.path() / "take.recording";
    std::filesystem::copy(VESK_SAMPLE_TAKE, take, std::filesystem::copy_options::recursive);
    session->open(take);
  }

  package::PiPSettings pip() const { return ui.pip(); }

  std::unique_ptr<PreviewController> session = makeSession();
  EditorUIState ui;
  EditorView editor{*session, ui};
  vesk::editor::StageOverlay overlay{*session, ui};
};

TEST_F(StageOverlay, withoutARecordingThereIsNone) {
  EXPECT_FALSE(overlay.isShown());
}

TEST_F(StageOverlay, aRecordingWithACameraHasOne) {
  int changes = 0;
  QObject::connect(&overlay, &vesk::editor::StageOverlay::isShownChanged, [&] { ++changes; });
  openTake();
  EXPECT_TRUE(overlay.isShown());
  EXPECT_EQ(changes, 1);
}

TEST_F(StageOverlay, aRecordingWithoutACameraHasNone) {
  session->open(putMarkedTake());
  ASSERT_TRUE(session->hasProject());
  EXPECT_FALSE(overlay.isShown());
}

TEST_F(StageOverlay, aWindowThatIsSwitchedOffCannotBeTakenHoldOf) {
  openTake();
  package::PiPSettings off = pip();
  off.enabled = false;
  overlay.setHovering(true);
  ui.setPip(off);
  EXPECT_FALSE(overlay.isShown());
  EXPECT_FALSE(overlay.hovering());
  overlay.move(100, 100);
  overlay.resize(100, 100);
  EXPECT_EQ(pip(), off);
  EXPECT_FALSE(overlay.resizing());
}

TEST_F(StageOverlay, itLiesWhereTheWindowIsDrawn) {
  openTake();
  const StageRect rect = PipGesture(pip(), {.width = 800, .height = 450}).rect();
  EXPECT_EQ(overlay.rect(), QRectF(rect.x, rect.y, rect.width, rect.height));
  EXPECT_TRUE(overlay.isCircle());
}

TEST_F(StageOverlay, itFollowsTheStageAndTheWindow) {
  openTake();
  int changes = 0;
  QObject::connect(&overlay, &vesk::editor::StageOverlay::geometryChanged, [&] { ++changes; });
  overlay.setStageSize({400, 225});
  overlay.setStageSize({400, 225});
  EXPECT_EQ(changes, 1);
  package::PiPSettings rounded = pip();
  rounded.shape = package::PiPSettings::Shape::rounded;
  ui.setPip(rounded);
  EXPECT_EQ(changes, 2);
  EXPECT_FALSE(overlay.isCircle());
}

TEST_F(StageOverlay, aMoveReachesThePictureAndCanBeUndone) {
  openTake();
  const package::PiPSettings before = pip();
  overlay.move(400, 225);
  EXPECT_EQ(pip().center, glm::vec2(0.5F, 0.5F));
  EXPECT_EQ(session->look().pip, pip());
  session->undo();
  EXPECT_EQ(pip(), before);
  EXPECT_EQ(session->look().pip, before);
}

TEST_F(StageOverlay, theStepsOfADragAreOneStepOfTheHistory) {
  openTake();
  const package::PiPSettings before = pip();
  for (int step = 0; step < 40; ++step) {
    hostTime += std::chrono::milliseconds(400);
    wallClock += std::chrono::milliseconds(400);
    overlay.move(300 + step, 200);
  }
  session->undo();
  EXPECT_EQ(pip(), before);
  EXPECT_FALSE(session->canUndo());
}

TEST_F(StageOverlay, aResizeLastsUntilItsEnd) {
  openTake();
  const QPointF handle = overlay.handle();
  overlay.resize(handle.x() + 20, handle.y() + 20);
  EXPECT_TRUE(overlay.resizing());
  EXPECT_GT(pip().size, 0.22);
  overlay.endResize();
  EXPECT_FALSE(overlay.resizing());
}

TEST_F(StageOverlay, aResizeStaysWithinItsLimits) {
  openTake();
  overlay.resize(1e9, 1e9);
  EXPECT_EQ(pip().size, 0.45);
  const QRectF rect = overlay.rect();
  overlay.resize(rect.center().x(), rect.center().y());
  EXPECT_NEAR(pip().size, 0.1, 1e-9);
}

}  // namespace
}  // namespace vesk::editor
