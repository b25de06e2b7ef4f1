#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <QTest>

#include "editor/PreviewControllerStage.h"
#include "package/LogCapture.h"

// The document of a session: taken and applied, undone, saved.
namespace vesk::editor::test {
namespace {

namespace fs = std::filesystem;
using package::EditDocument;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

class PreviewControllerDocumentTest : public PreviewControllerStage {};

TEST_F(PreviewControllerDocumentTest, aSnapshotAlwaysHasSegments) {
  const auto session = makeSession();
  EXPECT_THAT(*session->snapshot().segments, IsEmpty());
}

TEST_F(PreviewControllerDocumentTest, whatIsAppliedComesBackInASnapshot) {
  const auto take = putMarkedTake();
  const auto session = makeSession();
  session->open(take);
  EditDocument document = session->snapshot();
  document.ripple.size = 0.03;
  document.cursor.style = "准星";
  document.camera3D.fov = 40;
  document.pip.shape = "圆角";
  document.frame.enabled = true;
  document.transitionEase = "轻弹";
  document.motionBlurEnabled = false;
  document.motionBlurStrength = 0.5;
  document.systemVolume = 0.4;
  document.micVolume = 1.6;
  document.sensitivity = "保守";
  document.useAutoDetection = false;
  document.segments->pop_back();
  session->apply(document);
  EXPECT_EQ(session->snapshot(), document);
}

TEST_F(PreviewControllerDocumentTest, appliedWithoutSegmentsItLeavesTheTimeline) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  const std::string before = times(*session);
  EditDocument document;
  document.followSpeed = 0.9;
  session->apply(document);
  EXPECT_EQ(times(*session), before);
  EXPECT_EQ(session->followSpeedRaw(), 0.9);
}

TEST_F(PreviewControllerDocumentTest, onlyAnAppliedDocumentRaisesItsVersion) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  const int version = session->documentVersion();
  session->undo();
  session->regenerate();
  session->rebuildTrack();
  EXPECT_EQ(session->documentVersion(), version);
  session->apply(session->snapshot());
  EXPECT_EQ(session->documentVersion(), version + 1);
}

TEST_F(PreviewControllerDocumentTest, undoGivesBackAValueThatViewsCopy) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  setPipSize(*session, 0.41);
  const int version = session->documentVersion();
  session->pushUndo(0);
  setPipSize(*session, 0.19);
  session->undo();
  EXPECT_EQ(session->look().pip.size, 0.41);
  EXPECT_GT(session->documentVersion(), version);
  session->redo();
  EXPECT_EQ(session->look().pip.size, 0.19);
}

TEST_F(PreviewControllerDocumentTest, whatIsUndoneIsSaved) {
  const auto take = putMarkedTake();
  const auto session = makeSession();
  session->open(take);
  session->deleteSegment(session->timeline().segments[0].id);
  session->flushSave();
  const auto hasSegments = [&](std::size_t count) {
    return [&take, count] { return saved(take).segments->size() == count; };
  };
  ASSERT_TRUE(hasSegments(1)());
  session->undo();
  EXPECT_TRUE(QTest::qWaitFor(hasSegments(2)));
  session->redo();
  EXPECT_TRUE(QTest::qWaitFor(hasSegments(1)));
}

TEST_F(PreviewControllerDocumentTest, undoingBuildsThePathOnceAndTellsOfItOnce) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  const auto before = session->look().cameraTrack;
  session->deleteSegment(session->timeline().segments[0].id);
  const auto after = session->look().cameraTrack;
  ASSERT_NE(before, after);
  const QSignalSpy timeline(session.get(), &PreviewController::timelineChanged);
  const QSignalSpy look(session.get(), &PreviewController::lookChanged);
  const QSignalSpy version(session.get(), &PreviewController::documentVersionChanged);
  session->undo();
  EXPECT_EQ(session->look().cameraTrack, before);
  EXPECT_EQ(timeline.count(), 1);
  EXPECT_EQ(look.count(), 2);  // its values, and the path
  EXPECT_EQ(version.count(), 1);
  session->redo();
  EXPECT_EQ(session->look().cameraTrack, after);
  EXPECT_EQ(timeline.count(), 2);
  EXPECT_EQ(look.count(), 4);
  EXPECT_EQ(version.count(), 2);
}

TEST_F(PreviewControllerDocumentTest, undoneVolumesReachThePlayer) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  session->changeVolumes(0.4, 1.6);
  EXPECT_FLOAT_EQ(session->audioDiagnostics().volume, 0.4F);
  session->undo();
  EXPECT_FLOAT_EQ(session->audioDiagnostics().volume, 1);
  session->redo();
  EXPECT_FLOAT_EQ(session->audioDiagnostics().volume, 0.4F);
}

TEST_F(PreviewControllerDocumentTest, anEditSoonAfterAnUndoIsNotUndoneByARedo) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  session->changeVolumes(0.2, 1);
  hostTime += std::chrono::seconds(1);
  session->changeVolumes(0.3, 1);
  session->undo();
  hostTime += std::chrono::milliseconds(300);
  session->changeVolumes(0.4, 1);
  EXPECT_FALSE(session->canRedo());
  session->redo();
  EXPECT_EQ(session->look().systemVolume, 0.4);
  session->undo();
  EXPECT_EQ(session->look().systemVolume, 0.2);
}

TEST_F(PreviewControllerDocumentTest, whileADocumentIsLoadedNothingIsRememberedOrSaved) {
  const auto take = putMarkedTake();
  const std::string text = R"({"segments":[{"id":"a","start":3,"end":6}]})";
  write(take / "edit.json", text);
  const auto session = makeSession();
  QObject::connect(session.get(), &PreviewController::lookChanged, [&session] {
    session->pushUndo(PreviewController::discreteEdit);
    session->scheduleSave();
  });
  session->open(take);
  ASSERT_THAT(session->timeline().segments, SizeIs(1));
  EXPECT_FALSE(session->canUndo());
  waitForSaves();
  EXPECT_EQ(contents(take / "edit.json"), text);
}

TEST_F(PreviewControllerDocumentTest, undoOfARegenerationBringsTheSegmentsBackButNotTheFlag) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  session->deleteSegment(session->timeline().segments[0].id);
  const std::string edited = times(*session);
  session->resetToAutomatic();
  EXPECT_NE(times(*session), edited);
  session->undo();
  EXPECT_EQ(times(*session), edited);
  EXPECT_FALSE(session->hasManualEdits());
}

TEST_F(PreviewControllerDocumentTest, aSaveFollowsTheLastChangeOfAStream) {
  const auto take = putMarkedTake();
  const auto session = makeSession();
  session->open(take);
  for (int change = 0; change < 8; ++change) {
    setPipSize(*session, 0.2 + 0.01 * change);
    session->scheduleSave();
    runEvents(std::chrono::milliseconds(100));
    ASSERT_FALSE(isSaved(take));
  }
  ASSERT_TRUE(QTest::qWaitFor([&] { return isSaved(take); }));
  EXPECT_NEAR(saved(take).pip.size, 0.27, 1e-9);
}

TEST_F(PreviewControllerDocumentTest, aSaveThatFailsIsLoggedAndTheNextChangeTriesAgain) {
  const auto take = putMarkedTake();
  const auto session = makeSession();
  session->open(take);
  fs::create_directory(take / "edit.json");
  const package::LogCapture log(package::LogCategory::preview);
  session->flushSave();
  EXPECT_THAT(log.text(), HasSubstr("error: 保存 edit.json 失败："));
  fs::remove(take / "edit.json");
  session->scheduleSave();
  EXPECT_TRUE(QTest::qWaitFor([&] { return isSaved(take); }));
  EXPECT_THAT(*saved(take).segments, SizeIs(2));
}

TEST_F(PreviewControllerDocumentTest, withoutAProjectNothingIsRememberedOrSaved) {
  const auto session = makeSession();
  session->pushUndo(0);
  EXPECT_FALSE(session->canUndo());
  session->scheduleSave();
  session->flushSave();
  session->undo();
  session->redo();
  EXPECT_EQ(session->documentVersion(), 0);
}

TEST_F(PreviewControllerDocumentTest, withoutARendererTheSessionGoesOnWithoutALook) {
  const auto take = putMarkedTake();
  const auto session = makeSession();
  session->loseRenderer();
  EXPECT_EQ(session->loadError().toStdString(), "Metal 初始化失败，这台机器可能不支持所需特性");
  write(take / "edit.json", R"({"pip":{"size":0.4},"followSpeed":0.9})");
  session->open(take);
  EXPECT_EQ(session->followSpeedRaw(), 0.9);
  EXPECT_EQ(session->documentVersion(), 0);
  EXPECT_EQ(session->snapshot().pip.size, EditDocument().pip.size);
  EXPECT_THAT(session->timeline().segments, SizeIs(2));
}

TEST_F(PreviewControllerDocumentTest, withoutARendererNoDocumentIsWritten) {
  const std::string textOfFirst =
      R"({"pip":{"size":0.4},"segments":[{"id":"a","start":3,"end":6}]})";
  const std::string textOfSecond =
      R"({"frame":{"enabled":true},"segments":[{"id":"b","start":1,"end":2}]})";
  const auto first = putMarkedTake("first");
  const auto second = putMarkedTake("second");
  write(first / "edit.json", textOfFirst);
  write(second / "edit.json", textOfSecond);
  const auto session = makeSession();
  session->open(first);
  session->loseRenderer();
  session->changeFollowSpeed(0.9);
  session->deleteSegment("a");
  ASSERT_TRUE(session->addSegment(14));
  session->open(second);
  EXPECT_THAT(session->timeline().segments, IsEmpty());
  ASSERT_TRUE(session->addSegment(9));
  waitForSaves();
  session->unload();
  EXPECT_EQ(contents(first / "edit.json"), textOfFirst);
  EXPECT_EQ(contents(second / "edit.json"), textOfSecond);
}

TEST_F(PreviewControllerDocumentTest, whatWasChangedBeforeTheRendererWasLostIsSaved) {
  const auto take = putMarkedTake();
  const auto session = makeSession();
  session->open(take);
  setPipSize(*session, 0.41);
  session->scheduleSave();
  session->loseRenderer();
  EXPECT_EQ(saved(take).pip.size, 0.41);
}

TEST_F(PreviewControllerDocumentTest, theLossOfTheRendererIsLoggedOnce) {
  const auto session = makeSession();
  const package::LogCapture log(package::LogCategory::preview);
  session->loseRenderer();
  session->loseRenderer();
  session->open(putMarkedTake());
  session->flushSave();
  const std::string text = log.text();
  EXPECT_NE(text.find("warning: "), std::string::npos);
  EXPECT_EQ(text.find("warning: "), text.rfind("warning: "));
}

}  // namespace
}  // namespace vesk::editor::test
