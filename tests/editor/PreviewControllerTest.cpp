#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <fstream>
#include <utility>

#include "editor/PreviewController.h"
#include "editor/SessionStage.h"
#include "motion/SmartZoom.h"
#include "package/LogCapture.h"

namespace vesk::editor::test {
namespace {

namespace fs = std::filesystem;
using package::EditDocument;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;
using testing::StartsWith;

const QString noRecordings = QStringLiteral("还没有录制。先录一段。");

class PreviewControllerTest : public SessionStage {
 protected:
  static bool isSaved(const fs::path& package) { return fs::exists(package / "edit.json"); }

  static EditDocument saved(const fs::path& package) {
    const auto loaded = EditDocument::load(package, {});
    return loaded.ok() != nullptr ? *loaded.ok() : EditDocument();
  }

  static void write(const fs::path& file, std::string_view text) {
    std::ofstream(file, std::ios::binary) << text;
  }

  static void setPipSize(PreviewController& session, double size) {
    session.changeLook([&](compositor::CompositeSettings& look) { look.pip.size = size; });
  }
};

// Opening.

TEST_F(PreviewControllerTest, aTakeWithoutADocumentOpensWithTheInference) {
  const auto take = putMarkedTake();
  const auto session = makeSession();
  session->open(take);
  ASSERT_TRUE(session->hasProject());
  EXPECT_EQ(session->timeline().segments,
            motion::combinedSegments(*session->project(), motion::Sensitivity::standard, true));
  EXPECT_THAT(session->timeline().segments, SizeIs(2));
  EXPECT_FALSE(session->hasManualEdits());
  EXPECT_EQ(session->duration(), 20);
  EXPECT_EQ(session->currentTime(), 0);
  EXPECT_TRUE(session->loadError().isEmpty());
  EXPECT_FALSE(session->look().cameraTrack->samples.empty());
}

TEST_F(PreviewControllerTest, anEmptyListOfSegmentsWinsOverTheInference) {
  const auto take = putMarkedTake();
  write(take / "edit.json", R"({"segments":[]})");
  const auto session = makeSession();
  session->open(take);
  EXPECT_THAT(session->timeline().segments, IsEmpty());
  EXPECT_TRUE(session->hasManualEdits());
}

TEST_F(PreviewControllerTest, savedSegmentsAreTakenAsTheyAre) {
  const auto take = putMarkedTake();
  write(take / "edit.json", R"({"followSpeed":0.8,"sensitivity":"密集",
      "segments":[{"id":"a","start":3,"end":6,"level":2.5,"followSpeed":0.1}]})");
  const auto session = makeSession();
  session->open(take);
  EXPECT_EQ(times(*session), "3.000-6.000");
  EXPECT_EQ(session->timeline().segments[0].level, 2.5);
  // The global speed holds for every segment.
  EXPECT_EQ(session->timeline().segments[0].followSpeed, 0.8);
  EXPECT_EQ(session->timeline().sensitivity, motion::Sensitivity::dense);
  EXPECT_TRUE(session->hasManualEdits());
}

TEST_F(PreviewControllerTest, theModeOfTheTakeOverrulesTheDocument) {
  package::RecordingMeta perspective;
  perspective.cameraMode = package::CameraMode::perspective;
  const auto tilted = putTake("a", {}, 5, perspective);
  const auto flat = putTake("b", {}, 5);
  write(tilted / "edit.json", R"({"camera3D":{"enabled":false,"fov":33}})");
  write(flat / "edit.json", R"({"camera3D":{"enabled":true,"fov":33}})");
  const auto session = makeSession();
  session->open(tilted);
  EXPECT_TRUE(session->look().camera3D.enabled);
  EXPECT_EQ(session->look().camera3D.fov, 33);
  session->open(flat);
  EXPECT_FALSE(session->look().camera3D.enabled);
}

TEST_F(PreviewControllerTest, openingSavesNothing) {
  const auto take = putMarkedTake();
  const auto session = makeSession();
  session->open(take);
  runEvents(PreviewController::saveDelay + std::chrono::milliseconds(150));
  EXPECT_FALSE(isSaved(take));
  EXPECT_FALSE(session->canUndo());
}

TEST_F(PreviewControllerTest, leavingATakeSavesIt) {
  const auto first = putMarkedTake("first");
  const auto second = putMarkedTake("second");
  const auto session = makeSession();
  session->open(first);
  session->open(second);
  ASSERT_TRUE(isSaved(first));
  EXPECT_THAT(*saved(first).segments, SizeIs(2));
  EXPECT_FALSE(isSaved(second));
}

TEST_F(PreviewControllerTest, aTakeThatCannotBeLoadedLeavesTheOneBeforeWithoutHistory) {
  const auto good = putMarkedTake();
  const auto bad = folder.path() / "library" / "bad.recording";
  fs::create_directories(bad);
  const auto session = makeSession();
  session->open(good);
  session->pushUndo(0);
  session->open(bad);
  EXPECT_EQ(session->project()->url, good);
  EXPECT_FALSE(session->canUndo());
  EXPECT_THAT(session->loadError().toStdString(), StartsWith("打开失败："));
  EXPECT_THAT(session->loadError().toStdString(), HasSubstr("meta.json"));
}

TEST_F(PreviewControllerTest, anEmptyLibraryHasNoLatest) {
  const auto session = makeSession();
  session->loadLatest();
  EXPECT_FALSE(session->hasProject());
  EXPECT_EQ(session->loadError(), noRecordings);
}

TEST_F(PreviewControllerTest, theLatestIsTheFirstOfTheLibrary) {
  putMarkedTake("录制 2026-11-20 10.00.00");
  const auto newest = putMarkedTake("录制 2026-11-21 10.00.00");
  const auto session = makeSession();
  session->loadLatest();
  ASSERT_TRUE(session->hasProject());
  EXPECT_EQ(session->project()->url, newest);
  EXPECT_THAT(session->availableRecordings(), SizeIs(2));
}

TEST_F(PreviewControllerTest, aDamagedDocumentIsKeptAsideAndTheUserTold) {
  const auto take = putMarkedTake();
  write(take / "edit.json", "{ 这不是 JSON");
  const package::LogCapture log(package::LogCategory::preview);
  const auto session = makeSession();
  session->open(take);
  EXPECT_THAT(session->timeline().segments, SizeIs(2));
  EXPECT_FALSE(session->hasManualEdits());
  EXPECT_THAT(session->loadError().toStdString(),
              StartsWith("这份录制的编辑记录读不出来，已改用默认设置。原文件保留在 "
                         "edit.json.corrupt-"));
  EXPECT_THAT(log.text(), HasSubstr("error: edit.json 解析失败："));
  session->open(putMarkedTake("other"));
  EXPECT_TRUE(session->loadError().isEmpty());
}

TEST_F(PreviewControllerTest, aTakeWithoutLengthHasNoCameraTrack) {
  const auto session = makeSession();
  session->open(putTake("empty", {}, 0));
  ASSERT_TRUE(session->hasProject());
  EXPECT_TRUE(session->look().cameraTrack->samples.empty());
}

TEST_F(PreviewControllerTest, aTakeOfWhichNoPictureCanBeReadOpensAllTheSame) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  EXPECT_FALSE(session->screenPicture());
  EXPECT_THAT(session->audioDiagnostics().statusText, StartsWith("失败："));
}

TEST_F(PreviewControllerTest, coverageOfTheLimitIsNotTooDense) {
  const auto take = putTake("dense", {}, 10);
  write(take / "edit.json", R"({"segments":[{"id":"a","start":1,"end":8}]})");
  const auto session = makeSession();
  session->open(take);
  EXPECT_TRUE(session->densityWarning().isEmpty());
  session->setSegmentTimes("a", 1, 8.5);
  session->rebuildTrack();
  EXPECT_EQ(session->densityWarning().toStdString(), "效果覆盖了 75% 的时长，可能过于密集。");
}

TEST_F(PreviewControllerTest, theInferenceAddsAdviceToItsWarning) {
  using Kind = package::RecordedEvent::Kind;
  const auto take = putTake("dense", {markAt(0.5, Kind::zoomIn), markAt(9.5, Kind::zoomOut)}, 10);
  const auto session = makeSession();
  session->open(take);
  EXPECT_THAT(session->densityWarning().toStdString(),
              testing::EndsWith("可能过于密集。建议把灵敏度调到「保守」。"));
}

TEST_F(PreviewControllerTest, unloadingSavesAndEmptiesTheSession) {
  const auto take = putMarkedTake();
  const auto session = makeSession();
  session->open(take);
  session->seek(3);
  session->play();
  session->unload();
  EXPECT_TRUE(isSaved(take));
  EXPECT_FALSE(session->hasProject());
  EXPECT_FALSE(session->isPlaying());
  EXPECT_EQ(session->duration(), 0);
  EXPECT_EQ(session->currentTime(), 0);
  EXPECT_THAT(session->timeline().segments, IsEmpty());
  EXPECT_FALSE(session->look().cameraTrack);
  EXPECT_EQ(session->player(), nullptr);
  EXPECT_THAT(session->trackLayoutLines(), testing::ElementsAre("没有播放项"));
}

TEST_F(PreviewControllerTest, withoutARendererTheSessionGoesOnWithoutALook) {
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

// The document.

TEST_F(PreviewControllerTest, aSnapshotAlwaysHasSegments) {
  const auto session = makeSession();
  EXPECT_THAT(*session->snapshot().segments, IsEmpty());
}

TEST_F(PreviewControllerTest, whatIsAppliedComesBackInASnapshot) {
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

TEST_F(PreviewControllerTest, onlyAnAppliedDocumentRaisesItsVersion) {
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

TEST_F(PreviewControllerTest, undoGivesBackAValueThatViewsCopy) {
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

TEST_F(PreviewControllerTest, undoOfARegenerationBringsTheSegmentsBackButNotTheFlag) {
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

TEST_F(PreviewControllerTest, aSaveFollowsTheLastChangeOfAStream) {
  const auto take = putMarkedTake();
  const auto session = makeSession();
  session->open(take);
  for (int change = 0; change < 8; ++change) {
    setPipSize(*session, 0.2 + 0.01 * change);
    session->scheduleSave();
    runEvents(std::chrono::milliseconds(100));
    ASSERT_FALSE(isSaved(take));
  }
  runEvents(PreviewController::saveDelay + std::chrono::milliseconds(150));
  EXPECT_NEAR(saved(take).pip.size, 0.27, 1e-9);
}

TEST_F(PreviewControllerTest, aSaveThatFailsIsLoggedAndTheNextChangeTriesAgain) {
  const auto take = putMarkedTake();
  const auto session = makeSession();
  session->open(take);
  fs::create_directory(take / "edit.json");
  const package::LogCapture log(package::LogCategory::preview);
  session->flushSave();
  EXPECT_THAT(log.text(), HasSubstr("error: 保存 edit.json 失败："));
  fs::remove(take / "edit.json");
  session->scheduleSave();
  runEvents(PreviewController::saveDelay + std::chrono::milliseconds(150));
  EXPECT_THAT(*saved(take).segments, SizeIs(2));
}

TEST_F(PreviewControllerTest, withoutAProjectNothingIsRememberedOrSaved) {
  const auto session = makeSession();
  session->pushUndo(0);
  EXPECT_FALSE(session->canUndo());
  session->scheduleSave();
  session->flushSave();
  session->undo();
  session->redo();
  EXPECT_EQ(session->documentVersion(), 0);
}

// Segments.

TEST_F(PreviewControllerTest, theTimesOfASegmentAreWrittenWithoutATrack) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  const auto track = session->look().cameraTrack;
  session->setSegmentTimes(session->timeline().segments[0].id, 1, 4);
  EXPECT_TRUE(session->hasManualEdits());
  EXPECT_EQ(session->look().cameraTrack, track);
  session->rebuildTrack();
  EXPECT_NE(session->look().cameraTrack, track);
}

TEST_F(PreviewControllerTest, anUnknownSegmentChangesNothing) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  const std::string before = times(*session);
  session->setSegmentTimes("none", 1, 4);
  session->deleteSegment("none");
  session->toggleSegmentEnabled("none");
  EXPECT_FALSE(session->duplicateSegment("none"));
  EXPECT_EQ(times(*session), before);
  EXPECT_FALSE(session->canUndo());
  EXPECT_FALSE(session->hasManualEdits());
}

TEST_F(PreviewControllerTest, aSegmentIsAddedWhereTheCursorIs) {
  const auto session = makeSession();
  session->open(putTake("clicks", {clickAt(15, 0.2, 0.8)}));
  session->changeUseAutoDetection(false);
  const auto id = session->addSegment(15);
  ASSERT_TRUE(id);
  EXPECT_EQ(*id, "user_15000");
  const motion::ZoomSegment* segment = session->segment(*id);
  EXPECT_NEAR(segment->focus.x, 0.2, 1e-6);
  EXPECT_NEAR(segment->focus.y, 0.8, 1e-6);
  EXPECT_TRUE(session->hasManualEdits());
  EXPECT_FALSE(session->addSegment(15.5));
}

TEST_F(PreviewControllerTest, aClickIsDemotedAndPromotedByTheSameGesture) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  session->toggleEffect(3);
  EXPECT_THAT(session->timeline().segments, SizeIs(1));
  const auto id = session->toggleEffect(3);
  ASSERT_TRUE(id);
  EXPECT_EQ(session->segment(*id)->start, 3 - 1.575);
  session->undo();
  session->undo();
  EXPECT_THAT(session->timeline().segments, SizeIs(2));
}

TEST_F(PreviewControllerTest, deletingTellsWhoHadItSelected) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  const std::string id = session->timeline().segments[0].id;
  QSignalSpy deleted(session.get(), &PreviewController::segmentDeleted);
  session->deleteSegment(session->timeline().segments[0].id);
  ASSERT_EQ(deleted.count(), 1);
  EXPECT_EQ(deleted[0][0].toString().toStdString(), id);
}

TEST_F(PreviewControllerTest, aCopyBearsTheMomentItWasMade) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  const auto id = session->duplicateSegment(session->timeline().segments[1].id);
  EXPECT_EQ(id, "dup_1795000000123");
}

TEST_F(PreviewControllerTest, theQuestionBeforeAResetNamesTheSegments) {
  const auto session = makeSession();
  session->open(putMarkedTake());
  EXPECT_THAT(session->resetQuestion().toStdString(),
              StartsWith("时间轴上的 2 段将按算法重新推断"));
}

}  // namespace
}  // namespace vesk::editor::test
