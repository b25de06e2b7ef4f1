#include <gtest/gtest.h>

#include <array>
#include <cstdlib>

#include "package/RecordingProject.h"
#include "package/SyntheticPackage.h"
#include "package/TemporaryDirectory.h"

namespace vesk::package {
namespace {

using Kind = RecordedEvent::Kind;

constexpr Timestamp now{std::chrono::seconds(1795167667)};

/// Makes the temporary directory of the process one of the test's own.
class SyntheticPackage : public testing::Test {
 protected:
  void SetUp() override {
    if (const char* old = std::getenv("TMPDIR")) old_ = old;
    ::setenv("TMPDIR", directory_.path().c_str(), 1);
  }
  void TearDown() override { old_ ? ::setenv("TMPDIR", old_->c_str(), 1) : ::unsetenv("TMPDIR"); }

  TemporaryDirectory directory_;
  std::optional<std::string> old_;
};

TEST_F(SyntheticPackage, loadsAsTheRecordingThatWasAskedFor) {
  const std::array marks{SyntheticMark{.t = 2.5, .kind = Kind::zoomIn, .x = 0.25, .y = 0.75},
                         SyntheticMark{.t = 1, .kind = Kind::click, .x = 0, .y = 1}};
  const auto package = makeSyntheticPackage(marks, 12.3456, now);
  ASSERT_EQ(package, directory_ / "tqzn-test-2-12345.recording");
  const auto project = RecordingProject::load(*package, {});
  ASSERT_TRUE(project);
  RecordingMeta meta;
  meta.createdAt = now;
  meta.displayID = 1;
  meta.captureWidth = 1920;
  meta.captureHeight = 1080;
  meta.duration = 12.3456;
  meta.scope.value = CaptureScope::Display{0};
  EXPECT_EQ(project->meta, meta);
  ASSERT_EQ(project->events.size(), 2U);
  EXPECT_EQ(project->events[0].type, Kind::click);
  EXPECT_EQ(project->events[1].x, 0.25);
  EXPECT_EQ(project->events[1].y, 0.75);
  EXPECT_EQ(project->clicks.size(), 1U);
  EXPECT_TRUE(std::filesystem::is_empty(project->screenURL()));
}

TEST_F(SyntheticPackage, writesItsFilesCompactly) {
  const std::array marks{SyntheticMark{.t = 1, .kind = Kind::zoomOut, .x = 0.5, .y = 0.5}};
  ASSERT_TRUE(makeSyntheticPackage(marks, 5, now));
  EXPECT_EQ(directory_.contents("tqzn-test-1-5000.recording/events.jsonl"),
            "{\"t\":1.0,\"type\":\"zoomOut\",\"x\":0.5,\"y\":0.5}\n");
  const auto meta = directory_.contents("tqzn-test-1-5000.recording/meta.json");
  EXPECT_EQ(meta.find('\n'), std::string::npos);
  EXPECT_NE(meta.find(R"("scope":{"display":{"_0":0}})"), std::string::npos);
}

TEST_F(SyntheticPackage, ofTheSameShapeReplacesTheOneBefore) {
  const std::array first{SyntheticMark{.t = 1}};
  const std::array second{SyntheticMark{.t = 2}};
  const auto package = makeSyntheticPackage(first, 5, now);
  ASSERT_TRUE(package);
  directory_.put("tqzn-test-1-5000.recording/edit.json", "{}");
  EXPECT_EQ(makeSyntheticPackage(second, 5, now), package);
  EXPECT_FALSE(std::filesystem::exists(*package / "edit.json"));
  EXPECT_EQ(RecordingProject::load(*package, now)->events.at(0).t, 2);
}

TEST_F(SyntheticPackage, withoutMarksIsAProjectWithoutEvents) {
  const auto package = makeSyntheticPackage({}, 0, now);
  ASSERT_EQ(package, directory_ / "tqzn-test-0-0.recording");
  EXPECT_TRUE(RecordingProject::load(*package, now)->events.empty());
}

TEST_F(SyntheticPackage, isAbsentWhenItsDirectoryCannotBeMade) {
  ::setenv("TMPDIR", (directory_ / "missing").c_str(), 1);
  EXPECT_EQ(makeSyntheticPackage({}, 5, now), std::nullopt);
  ::setenv("TMPDIR", directory_.path().c_str(), 1);
  EXPECT_EQ(makeSyntheticPackage({}, 1e300, now), std::nullopt);
}

}  // namespace
}  // namespace vesk::package
