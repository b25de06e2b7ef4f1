#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sys/stat.h>

#include <limits>

#include "package/LogCapture.h"
#include "package/RecordingProject.h"
#include "package/TemporaryDirectory.h"

namespace vesk::package {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using Kind = RecordedEvent::Kind;

constexpr Timestamp now{std::chrono::seconds(1795167667)};

RecordedEvent event(double t, Kind kind, double x = 0) {
  RecordedEvent result;
  result.t = t;
  result.type = kind;
  result.x = x;
  return result;
}

std::vector<double> timesOf(const std::vector<RecordedEvent>& events) {
  std::vector<double> times;
  for (const auto& event : events) times.push_back(event.t);
  return times;
}

TEST(RecordingProject, anEmptyEventLogIsAProjectWithoutEvents) {
  const TemporaryDirectory directory;
  directory.put("meta.json", "{}");
  directory.put("events.jsonl", "");
  const auto project = RecordingProject::load(directory.path(), now);
  ASSERT_TRUE(project);
  EXPECT_EQ(project->url, directory.path());
  EXPECT_EQ(project->meta.createdAt, now);
  EXPECT_TRUE(project->events.empty());
  EXPECT_TRUE(project->moves.empty());
  EXPECT_TRUE(project->clicks.empty());
  EXPECT_TRUE(project->keys.empty());
  EXPECT_TRUE(project->appChanges.empty());
  EXPECT_TRUE(project->gaps.empty());
  EXPECT_EQ(project->duration(), 0);
}

TEST(RecordingProject, aLoadLogsOneInformationEntry) {
  const TemporaryDirectory directory;
  directory.put("a.recording/meta.json",
                R"({"captureWidth":1920,"captureHeight":1080,"duration":25.0209})");
  directory.put("a.recording/events.jsonl",
                "{\"t\":1,\"type\":\"click\"}\n{\"t\":2,\"type\":\"up\"}\n");
  const LogCapture capture{LogCategory::project};
  ASSERT_TRUE(RecordingProject::load(directory / "a.recording/", now));
  EXPECT_EQ(capture.text(), "info: loaded a.recording 1920x1080 dur=25.02s events=2 clicks=1\n");
}

TEST(RecordingProject, badLinesAreOneErrorEntryAndNoFailure) {
  const TemporaryDirectory directory;
  directory.put("meta.json", "{}");
  directory.put("events.jsonl", "{\"t\":1,\"type\":\"jump\"}\n{\"t\":2,\"ty");
  const LogCapture capture{LogCategory::project};
  const auto project = RecordingProject::load(directory.path(), now);
  ASSERT_TRUE(project);
  EXPECT_TRUE(project->events.empty());
  EXPECT_THAT(capture.text(),
              HasSubstr("error: events.jsonl 有 2 行无法解析（通常是崩溃截断的尾行）\n"));
}

TEST(RecordingProject, eventsAreSortedAndEqualTimesKeepTheirOrder) {
  const auto project = RecordingProject::make(
      "x.recording", {},
      {event(2, Kind::move, 1), event(1, Kind::move, 2), event(2, Kind::click, 3),
       event(1, Kind::click, 4), event(2, Kind::move, 5)});
  std::vector<double> order;
  for (const auto& each : project.events) order.push_back(*each.x);
  EXPECT_THAT(order, ElementsAre(2, 4, 1, 3, 5));
  EXPECT_THAT(timesOf(project.moves), ElementsAre(1, 2, 2));
  EXPECT_THAT(timesOf(project.clicks), ElementsAre(1, 2));
}

TEST(RecordingProject, timesThatAreNoNumbersStandAtTheEnd) {
  const double nan = std::numeric_limits<double>::quiet_NaN();
  const auto project = RecordingProject::make(
      "x.recording", {},
      {event(nan, Kind::up), event(2, Kind::up), event(nan, Kind::up), event(1, Kind::up)});
  EXPECT_THAT(timesOf(project.events), ElementsAre(1, 2, testing::IsNan(), testing::IsNan()));
}

TEST(RecordingProject, everyKindStandsInItsViewOrInNone) {
  std::vector<RecordedEvent> events;
  for (const auto kind : recordedEventKinds) events.push_back(event(1, kind));
  const auto project = RecordingProject::make("x.recording", {}, events);
  EXPECT_EQ(project.events, events);
  EXPECT_THAT(project.moves, ElementsAre(event(1, Kind::move)));
  EXPECT_THAT(project.clicks, ElementsAre(event(1, Kind::click)));
  EXPECT_THAT(project.keys, ElementsAre(event(1, Kind::key)));
  EXPECT_THAT(project.appChanges, ElementsAre(event(1, Kind::appChange)));
  EXPECT_THAT(project.gaps, ElementsAre(event(1, Kind::gap)));
}

TEST(RecordingProject, theDurationIsTheIndexsOrThatOfTheLastEvent) {
  auto project = RecordingProject::make("x.recording", {}, {event(3, Kind::up)});
  EXPECT_EQ(project.duration(), 3);
  project.meta.duration = 2;
  EXPECT_EQ(project.duration(), 2);
}

TEST(RecordingProject, mediaAreFoundByTheirFilesAlone) {
  const TemporaryDirectory directory;
  RecordingMeta meta;
  meta.hasCamera = true;
  const auto project = RecordingProject::make(directory.path(), meta, {});
  EXPECT_EQ(project.screenURL(), directory / "screen.mov");
  EXPECT_EQ(project.cameraURL(), std::nullopt);
  EXPECT_EQ(project.micURL(), std::nullopt);
  directory.put("camera.mov", "");
  directory.put("mic.m4a", "");
  EXPECT_EQ(project.cameraURL(), directory / "camera.mov");
  EXPECT_EQ(project.micURL(), directory / "mic.m4a");
  std::filesystem::remove(directory / "mic.m4a");
  EXPECT_EQ(project.micURL(), std::nullopt);
}

TEST(RecordingProject, mediaThatArePipesOrLeadOutOfThePackageAreNone) {
  const TemporaryDirectory directory;
  directory.put("private.mov", "");
  std::filesystem::create_directory(directory / "a.recording");
  const auto project = RecordingProject::make(directory / "a.recording", {}, {});
  std::filesystem::create_symlink("../private.mov", project.url / "camera.mov");
  ASSERT_EQ(::mkfifo((project.url / "mic.m4a").c_str(), 0600), 0);
  const LogCapture capture{LogCategory::project};
  EXPECT_EQ(project.cameraURL(), std::nullopt);
  EXPECT_EQ(project.micURL(), std::nullopt);
  EXPECT_THAT(capture.text(), HasSubstr("camera.mov”：它是一个链接，指向录制包之外"));
  EXPECT_THAT(capture.text(), HasSubstr("mic.m4a”：它不是普通文件"));
}

TEST(RecordingProject, theSampleTakeLoadsWhole) {
  const LogCapture capture{LogCategory::project};
  const auto project = RecordingProject::load(VESK_SAMPLE_TAKE, now);
  ASSERT_TRUE(project);
  EXPECT_FALSE(project->moves.empty());
  EXPECT_FALSE(project->clicks.empty());
  EXPECT_EQ(capture.text().find("error"), std::string::npos);
}

PackageError failureOf(const std::filesystem::path& package) {
  const auto project = RecordingProject::load(package, now);
  return project ? PackageError{PackageError::Kind::malformed, "loaded"} : project.error();
}

TEST(RecordingProject, aMissingFileFailsTheLoadByName) {
  const TemporaryDirectory directory;
  EXPECT_EQ(failureOf(directory.path()).kind, PackageError::Kind::fileUnreadable);
  EXPECT_THAT(failureOf(directory.path()).message, HasSubstr("meta.json”：文件或文件夹不存在"));
  directory.put("meta.json", "{}");
  EXPECT_THAT(failureOf(directory.path()).message, HasSubstr("events.jsonl”：文件或文件夹不存在"));
}

TEST(RecordingProject, aDamagedIndexFailsTheLoadAndIsNotTouched) {
  const TemporaryDirectory directory;
  directory.put("meta.json", R"({"fps":0})");
  directory.put("events.jsonl", "");
  EXPECT_EQ(failureOf(directory.path()).kind, PackageError::Kind::outOfRange);
  EXPECT_EQ(directory.contents("meta.json"), R"({"fps":0})");
}

TEST(RecordingProject, anEventLogThatIsNoTextFailsTheLoad) {
  const TemporaryDirectory directory;
  directory.put("meta.json", "{}");
  directory.put("events.jsonl", "\xFF\xFE{}");
  EXPECT_EQ(failureOf(directory.path()).kind, PackageError::Kind::notUtf8);
}

TEST(RecordingProject, anIndexBeyondAllSizeIsRefused) {
  const TemporaryDirectory directory;
  std::filesystem::resize_file(directory.put("meta.json", ""), std::uintmax_t{64} << 20);
  EXPECT_THAT(failureOf(directory.path()).message, HasSubstr("超过上限"));
}

TEST(RecordingProject, aPipeInPlaceOfTheLogDoesNotHang) {
  const TemporaryDirectory directory;
  directory.put("meta.json", "{}");
  ASSERT_EQ(::mkfifo((directory / "events.jsonl").c_str(), 0600), 0);
  EXPECT_EQ(failureOf(directory.path()).kind, PackageError::Kind::fileUnreadable);
}

TEST(RecordingProject, filesThatLeadOutOfThePackageFailTheLoad) {
  const TemporaryDirectory directory;
  directory.put("meta.json", "{}");
  directory.put("a.recording/events.jsonl", "");
  const auto package = directory / "a.recording";
  std::filesystem::create_symlink("../meta.json", package / "meta.json");
  EXPECT_THAT(failureOf(package).message, HasSubstr("meta.json”：它是一个链接，指向录制包之外"));
  std::filesystem::remove(package / "meta.json");
  std::filesystem::create_directory(package / "meta.json");
  EXPECT_THAT(failureOf(package).message, HasSubstr("meta.json”：它不是普通文件"));
  std::filesystem::remove(package / "meta.json");
  directory.put("a.recording/meta.json", "{}");
  std::filesystem::remove(package / "events.jsonl");
  std::filesystem::create_symlink("/dev/zero", package / "events.jsonl");
  EXPECT_THAT(failureOf(package).message, HasSubstr("events.jsonl”：它是一个链接"));
}

TEST(ListPackages, givesThePackagesByNameNewestFirst) {
  const TemporaryDirectory directory;
  for (const char* name :
       {"20260101-000000.recording", "20261231-000000.recording", "talk.recording",
        ".hidden.recording", "notes.txt", "old.RECORDING", "x.recording.bak"}) {
    std::filesystem::create_directory(directory / name);
  }
  EXPECT_THAT(listPackages(directory.path()),
              ElementsAre(directory / "talk.recording", directory / "20261231-000000.recording",
                          directory / "20260101-000000.recording"));
}

TEST(ListPackages, aFolderThatCannotBeListedIsEmpty) {
  const TemporaryDirectory directory;
  EXPECT_TRUE(listPackages(directory / "missing").empty());
  EXPECT_TRUE(listPackages(directory.put("file", "")).empty());
}

}  // namespace
}  // namespace vesk::package
