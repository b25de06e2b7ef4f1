// What becomes of changes: undo, the saved document, another session.
#include <fstream>

#include "motion/StoredSegment.h"
#include "window/WindowStage.h"

namespace vesk::app::test {
namespace {

class DocumentWindow : public WindowStage {
 protected:
  void deleteFirstSegment() {
    hand().click(place(QString::fromStdString("segment_" + segment(0).id)));
    hand().type(Key::forwardDelete);
    ASSERT_EQ(segments().size(), 1U);
  }
};

TEST_F(DocumentWindow, theKeysUndoAndRedo) {
  open(putTour());
  deleteFirstSegment();
  for (const auto modifier : {capture::controlModifier, capture::commandModifier}) {
    hand().type(Key::z, modifier);
    EXPECT_EQ(segments().size(), 2U) << modifier;
    hand().type(Key::z, modifier | capture::shiftModifier);
    EXPECT_EQ(segments().size(), 1U) << modifier;
  }
}

TEST_F(DocumentWindow, theButtonsAndTheMenuUndoAndRedo) {
  open(putTour());
  deleteFirstSegment();
  hand().click(place("undoButton"));
  EXPECT_EQ(segments().size(), 2U);
  hand().click(place("redoButton"));
  EXPECT_EQ(segments().size(), 1U);
  hand().click(place("menuButton"));
  ASSERT_TRUE(until([&] { return isShown("undoMenuItem"); }));
  hand().click(place("undoMenuItem"));
  EXPECT_EQ(segments().size(), 2U);
}

TEST_F(DocumentWindow, theDocumentFollowsTheLastChange) {
  const auto package = putTour();
  open(package);
  deleteFirstSegment();
  const auto changed = std::chrono::steady_clock::now();
  ASSERT_TRUE(until([&] { return std::filesystem::exists(package / "edit.json"); }));
  constexpr auto busyMachine = std::chrono::seconds{2};
  EXPECT_LT(std::chrono::steady_clock::now() - changed,
            editor::PreviewController::saveDelay + busyMachine);
  EXPECT_EQ(saved(package), session().snapshot());
}

TEST_F(DocumentWindow, anotherSessionFindsEverythingAsItWas) {
  const auto package = putTour();
  open(package);
  const QPointF handle = place(QString::fromStdString("trimEnd_" + segment(1).id));
  hand().drag(handle, handle - QPointF(12, 0));
  const QPointF camera = place("pipOverlay");
  hand().drag(camera, camera - QPointF(80, 60));
  hand().click(place("timelineRuler", {100, 10}));
  const auto segmentsBefore = segments();
  const package::EditDocument document = session().snapshot();
  quit();
  EXPECT_EQ(saved(package), document) << "quitting does not wait for the delay";

  open(package);
  EXPECT_EQ(segments(), segmentsBefore);
  EXPECT_EQ(session().snapshot(), document);
  EXPECT_TRUE(isShown("manualEditsText"));
  EXPECT_FALSE(session().canUndo());
  EXPECT_EQ(session().currentTime(), 0);
}

TEST_F(DocumentWindow, aDamagedDocumentIsTold) {
  const auto package = putTour();
  std::ofstream(package / "edit.json") << "{\"segments\":[";
  open(package);
  ASSERT_TRUE(isShown("loadNotice"));
  EXPECT_FALSE(session().loadError().isEmpty());
  EXPECT_EQ(item("loadNotice").property("text").toString(), session().loadError());
  EXPECT_EQ(segments().size(), 2U);
}

TEST_F(DocumentWindow, withoutARecordingThePageOffersTheLatest) {
  start({.mode = RootMode::edit});
  EXPECT_TRUE(isShown("emptyStage"));
  EXPECT_FALSE(isShown("previewStage"));
  EXPECT_EQ(item("loadErrorText").property("text").toString(), QString("还没有录制。先录一段。"));
  hand().type(Key::m);
  hand().type(Key::space);
  EXPECT_FALSE(session().isPlaying());

  putTour();
  hand().click(place("openLatestButton"));
  EXPECT_TRUE(until([&] { return session().hasProject(); }));
  EXPECT_TRUE(isShown("previewStage"));
  EXPECT_FALSE(isShown("emptyStage"));
}

}  // namespace
}  // namespace vesk::app::test
