#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QSignalSpy>
#include <climits>

#include "editor/PreviewControllerStage.h"
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

class PreviewControllerTest : public PreviewControllerStage {};

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

TEST_F(PreviewControllerTest, aDocumentThatRepeatsTheInferenceCountsAsEdited) {
  const auto take = putMarkedTake();
  const auto session = makeSession();
  session->open(take);
  const auto inferred = session->timeline().segments;
  session->flushSave();
  session->open(take);
  EXPECT_EQ(session->timeline().segments, inferred);
  EXPECT_TRUE(session->hasManualEdits());
}

TEST_F(PreviewControllerTest, openingSetsThePlayersVolume) {
  const auto take = putMarkedTake();
  write(take / "edit.json", R"({"systemVolume":0.4,"micVolume":1.5})");
  const auto session = makeSession();
  session->open(take);
  EXPECT_FLOAT_EQ(session->audioDiagnostics().volume, 0.4F);
}

TEST_F(PreviewControllerTest, openingTellsOfTheTimelineOnce) {
  const auto inferred = putMarkedTake("inferred");
  const auto edited = putMarkedTake("edited");
  write(edited / "edit.json", R"({"segments":[{"id":"a","start":3,"end":6}]})");
  const auto session = makeSession();
  const QSignalSpy told(session.get(), &PreviewController::timelineChanged);
  session->open(inferred);
  EXPECT_EQ(told.count(), 1);
  session->open(edited);
  EXPECT_EQ(told.count(), 2);
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
  waitForSaves();
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
  session->deleteSegment(session->timeline().segments[0].id);
  session->deleteSegment(session->timeline().segments[0].id);
  session->undo();
  ASSERT_TRUE(session->canUndo() && session->canRedo());
  const std::string segments = times(*session);
  session->open(bad);
  EXPECT_EQ(session->project()->url, good);
  EXPECT_EQ(session->duration(), 20);
  EXPECT_EQ(times(*session), segments);
  EXPECT_FALSE(session->canUndo());
  EXPECT_FALSE(session->canRedo());
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

TEST_F(PreviewControllerTest, aTakeThatComesMeanwhileIsNotTakenForTheLatest) {
  const auto take = putMarkedTake("录制 2026-11-20 10.00.00");
  const auto session = makeSession();
  QObject::connect(session.get(), &PreviewController::projectChanged,
                   [this] { putMarkedTake("录制 2026-11-21 10.00.00"); });
  const package::LogCapture log(package::LogCategory::preview);
  session->loadLatest();
  EXPECT_EQ(session->project()->url, take);
  EXPECT_THAT(session->availableRecordings(), SizeIs(2));
  EXPECT_THAT(log.text(), HasSubstr("info: opened 录制 2026-11-20 10.00.00.recording dur=20"));
}

TEST_F(PreviewControllerTest, aSlashMayFollowThePackagesName) {
  const auto take = putMarkedTake("tour");
  for (const char* slash : {"/", "//"}) {
    const auto session = makeSession();
    const package::LogCapture log(package::LogCategory::preview);
    session->open(take.string() + slash);
    EXPECT_EQ(session->title().toStdString(), "tour");
    EXPECT_EQ(session->project()->url, take);
    EXPECT_THAT(log.text(), HasSubstr("info: opened tour.recording dur=20"));
  }
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

TEST_F(PreviewControllerTest, aDamagedDocumentThatCannotBeKeptIsToldToo) {
  // The document's name still fits into a path so deep, and its copy's does not.
  constexpr std::size_t deepest = PATH_MAX - 26;
  const std::size_t around = (library() / ".recording").native().size();
  std::string name;
  while (around + name.size() < deepest) name += name.size() % 200 == 199 ? '/' : 'x';
  const auto take = putTake(name, {}, 5);
  write(take / "edit.json", "{ 这不是 JSON");
  const auto session = makeSession();
  session->open(take);
  EXPECT_TRUE(session->hasProject());
  EXPECT_EQ(session->loadError().toStdString(),
            "这份录制的编辑记录读不出来，已改用默认设置（原文件备份失败）");
}

TEST_F(PreviewControllerTest, aTakeWithoutLengthHasNoCameraTrack) {
  const auto take = putTake("empty", {}, 0);
  write(take / "edit.json", R"({"segments":[{"id":"a","start":0,"end":3}]})");
  const auto session = makeSession();
  session->open(take);
  ASSERT_THAT(session->timeline().segments, SizeIs(1));
  ASSERT_TRUE(session->look().cameraTrack);
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

}  // namespace
}  // namespace vesk::editor::test
