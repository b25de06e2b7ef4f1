#include <gtest/gtest.h>
#include <sys/stat.h>

#include <filesystem>
#include <limits>
#include <string>

#include "package/DirectorySize.h"
#include "package/RecordingItem.h"
#include "package/TemporaryDirectory.h"

namespace vesk::package {
namespace {

constexpr Timestamp now{std::chrono::seconds(1795167667)};

std::string labelOf(double duration) {
  RecordingItem item;
  item.duration = duration;
  return item.durationLabel();
}

TEST(RecordingItem, aShortDurationIsLabelledInTenthsOfASecond) {
  EXPECT_EQ(labelOf(0), "0.0s");
  EXPECT_EQ(labelOf(12.34), "12.3s");
  EXPECT_EQ(labelOf(59.9), "59.9s");
  EXPECT_EQ(labelOf(59.97), "60.0s");
}

TEST(RecordingItem, aLongDurationIsLabelledInMinutesAndSeconds) {
  EXPECT_EQ(labelOf(60), "1:00");
  EXPECT_EQ(labelOf(67.9), "1:07");
  EXPECT_EQ(labelOf(3600), "60:00");
}

TEST(RecordingItem, anAbsurdDurationHasALabelToo) {
  constexpr double infinity = std::numeric_limits<double>::infinity();
  EXPECT_EQ(labelOf(std::numeric_limits<double>::quiet_NaN()), "0.0s");
  EXPECT_EQ(labelOf(infinity), "0.0s");
  EXPECT_EQ(labelOf(-infinity), "0.0s");
  EXPECT_EQ(labelOf(-2.5), "-2.5s");
  EXPECT_EQ(labelOf(1e300), "16666666666666:40");
  EXPECT_EQ(labelOf(-1e300), "-1000000000000000.0s");
}

TEST(RecordingItem, showsWhatTheIndexSays) {
  const TemporaryDirectory directory;
  directory.put("meta.json", R"({"createdAt":"2026-11-20T09:41:07Z","duration":24.9,
    "captureWidth":1920,"captureHeight":1080,"fps":30,"cameraMode":"3D 透视","interrupted":true,
    "hasMicrophone":true,"hasSystemAudio":true})");
  directory.put("events.jsonl", "{\"type\":\"click\"}\n{\"type\":\"zoomIn\"}\n");
  const RecordingItem expected{
      .url = directory.path(),
      .createdAt = Timestamp(std::chrono::seconds(1795167667)),
      .duration = 24.9,
      .pixelSize = {1920, 1080},
      .fps = 30,
      .cameraMode = CameraMode::perspective,
      .clickCount = 1,
      .markCount = 1,
      .bytes = allocatedSize(directory.path()),
      .interrupted = true,
      .hasMic = true,
      .hasSystemAudio = true,
  };
  EXPECT_EQ(scanRecording(directory.path(), {}), expected);
}

TEST(RecordingItem, anEmptyIndexGivesTheDefaults) {
  const TemporaryDirectory directory;
  directory.put("meta.json", "{}");
  const RecordingItem expected{
      .url = directory.path(), .createdAt = now, .bytes = allocatedSize(directory.path())};
  EXPECT_EQ(scanRecording(directory.path(), now), expected);
}

TEST(RecordingItem, theLastEventIsNoDuration) {
  const TemporaryDirectory directory;
  directory.put("meta.json", "{}");
  directory.put("events.jsonl", "{\"t\":12,\"type\":\"move\",\"x\":0,\"y\":0}\n");
  EXPECT_EQ(scanRecording(directory.path(), now)->duration, 0);
}

TEST(RecordingItem, withoutAReadableIndexThereIsNone) {
  const TemporaryDirectory directory;
  EXPECT_EQ(scanRecording(directory.path(), now), std::nullopt);
  EXPECT_EQ(scanRecording(directory / "missing", now), std::nullopt);
  for (const char* text : {"", "{", "[]", R"({"fps":"fast"})", R"({"scope":{}})"}) {
    directory.put("meta.json", text);
    EXPECT_EQ(scanRecording(directory.path(), now), std::nullopt) << text;
    EXPECT_EQ(directory.contents("meta.json"), text);
  }
}

TEST(RecordingItem, aHugeIndexIsNone) {
  const TemporaryDirectory directory;
  std::filesystem::resize_file(directory.put("meta.json", "{}"), std::uintmax_t{1} << 40);
  EXPECT_EQ(scanRecording(directory.path(), now), std::nullopt);
}

TEST(RecordingItem, whatIsNoFileIsNoIndex) {
  const TemporaryDirectory directory;
  const TemporaryDirectory elsewhere;
  const auto index = directory / "meta.json";
  std::filesystem::create_directory(index);
  EXPECT_EQ(scanRecording(directory.path(), now), std::nullopt);
  std::filesystem::remove(index);
  ASSERT_EQ(::mkfifo(index.c_str(), 0600), 0);
  EXPECT_EQ(scanRecording(directory.path(), now), std::nullopt);
  std::filesystem::remove(index);
  std::filesystem::create_symlink("/dev/zero", index);
  EXPECT_EQ(scanRecording(directory.path(), now), std::nullopt);
  std::filesystem::remove(index);
  std::filesystem::create_symlink(elsewhere.put("meta.json", "{}"), index);
  EXPECT_EQ(scanRecording(directory.path(), now), std::nullopt);
}

TEST(RecordingItem, aLogThatCannotBeReadLeavesNoCounts) {
  const TemporaryDirectory directory;
  const TemporaryDirectory elsewhere;
  directory.put("meta.json", "{}");
  const auto log = directory / "events.jsonl";
  const auto expectNoCounts = [&](const char* what) {
    const auto item = scanRecording(directory.path(), now);
    ASSERT_TRUE(item) << what;
    EXPECT_EQ(item->clickCount, 0) << what;
    EXPECT_EQ(item->markCount, 0) << what;
    std::filesystem::remove(log);
  };
  expectNoCounts("missing");
  directory.put("events.jsonl", "\"click\"\n\"zoomIn\"\n\xFF\n");
  expectNoCounts("no UTF-8");
  std::filesystem::create_directory(log);
  expectNoCounts("directory");
  ASSERT_EQ(::mkfifo(log.c_str(), 0600), 0);
  expectNoCounts("pipe");
  std::filesystem::create_symlink("/dev/zero", log);
  expectNoCounts("device");
  std::filesystem::create_symlink(elsewhere.put("events.jsonl", "\"click\"\n"), log);
  expectNoCounts("link out of the package");
  std::filesystem::create_symlink("nowhere", log);
  expectNoCounts("link that leads nowhere");
}

TEST(RecordingItem, theSampleTakeIsReadWhole) {
  const auto item = scanRecording(VESK_SAMPLE_TAKE, now);
  ASSERT_TRUE(item);
  EXPECT_GT(item->clickCount, 0);
  EXPECT_GT(item->markCount, 0);
  EXPECT_GT(item->bytes, 0);
}

}  // namespace
}  // namespace vesk::package
