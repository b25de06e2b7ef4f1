#include <fmt/format.h>
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "package/RecordingMeta.h"

namespace vesk::package {
namespace {

using testing::HasSubstr;

constexpr Timestamp now{std::chrono::seconds(1795167667)};

std::expected<RecordingMeta, PackageError> decode(std::string_view json) {
  return decodeRecordingMeta(json, now);
}

/// The message of a decode that must fail.
std::string failureOf(std::string_view json) {
  const auto meta = decode(json);
  return meta ? "decoded" : meta.error().message;
}

RecordingMeta fullMeta() {
  RecordingMeta meta;
  meta.version = 2;
  meta.createdAt = now;
  meta.source = RecordingMeta::Source::region;
  meta.displayID = 4294967295U;
  meta.captureWidth = 2560;
  meta.captureHeight = 1440;
  meta.fps = 30;
  meta.scaleFactor = 1.25;
  meta.firstFramePTS = 81234.5671875;
  meta.duration = 25.02099887084961;
  meta.interrupted = true;
  meta.interruptReason = "显示器已断开 \"1\"\n";
  meta.droppedFrames = 3;
  meta.cursorSeparated = false;
  meta.hasSystemAudio = true;
  meta.hasMicrophone = true;
  meta.hasCamera = true;
  meta.cameraFirstFramePTS = 81234.9791875;
  meta.cameraFirstLitPTS = 81235.4791875;
  meta.micFirstSamplePTS = 0.1;
  meta.cameraMode = CameraMode::perspective;
  meta.scope.value = CaptureScope::Region{7, {10.5, -20, 640, 480.25}};
  return meta;
}

TEST(RecordingMeta, anEmptyObjectGivesTheDefaults) {
  const auto meta = decode("{}");
  ASSERT_TRUE(meta);
  RecordingMeta expected;
  expected.createdAt = now;
  EXPECT_EQ(*meta, expected);
  EXPECT_EQ(meta->version, 1);
  EXPECT_EQ(meta->fps, 60);
  EXPECT_EQ(meta->scaleFactor, 2.0);
  EXPECT_TRUE(meta->cursorSeparated);
  EXPECT_EQ(meta->cameraMode, CameraMode::zoom);
  EXPECT_EQ(meta->scope, CaptureScope{CaptureScope::Display{0}});
  EXPECT_EQ(meta->firstFramePTS, std::nullopt);
}

TEST(RecordingMeta, whatIsWrittenReadsBackInBothLayouts) {
  for (const auto& meta : {fullMeta(), *decode("{}")}) {
    EXPECT_EQ(decode(encodeRecordingMeta(meta)), meta);
    EXPECT_EQ(decode(encodeRecordingMeta(meta, JsonLayout::compact)), meta);
  }
}

TEST(RecordingMeta, theTextIsPrettyWithSortedKeysAndWithoutAbsentFields) {
  RecordingMeta meta;
  meta.createdAt = now;
  meta.scope.value = CaptureScope::Window{1234};
  EXPECT_EQ(encodeRecordingMeta(meta), R"({
  "cameraMode": "放大",
  "captureHeight": 0,
  "captureWidth": 0,
  "createdAt": "2026-11-20T09:41:07Z",
  "cursorSeparated": true,
  "displayID": 0,
  "droppedFrames": 0,
  "fps": 60,
  "hasCamera": false,
  "hasMicrophone": false,
  "hasSystemAudio": false,
  "interrupted": false,
  "scaleFactor": 2.0,
  "scope": {
    "window": {
      "_0": 1234
    }
  },
  "source": "display",
  "version": 1
})");
}

TEST(RecordingMeta, aReasonThatIsNotUtf8IsWrittenWithReplacements) {
  RecordingMeta meta;
  meta.interruptReason = "\xFF!";
  EXPECT_EQ(decode(encodeRecordingMeta(meta))->interruptReason, "\uFFFD!");
}

TEST(RecordingMeta, theScopeDefaultsToTheDecodedDisplay) {
  EXPECT_EQ(decode(R"({"displayID":7})")->scope, CaptureScope{CaptureScope::Display{7}});
  EXPECT_EQ(decode(R"({"displayID":7,"scope":null})")->scope,
            CaptureScope{CaptureScope::Display{7}});
}

TEST(RecordingMeta, everyScopeHasItsForm) {
  EXPECT_EQ(decode(R"({"scope":{"display":{"_0":7}}})")->scope,
            CaptureScope{CaptureScope::Display{7}});
  EXPECT_EQ(decode(R"({"scope":{"window":{"_0":1234.0},"later":1}})")->scope,
            CaptureScope{CaptureScope::Window{1234}});
  EXPECT_EQ(decode(R"({"scope":{"region":{"displayID":7,"rect":[[1,2.5],[3,4]]}}})")->scope,
            (CaptureScope{CaptureScope::Region{7, {1, 2.5, 3, 4}}}));
}

TEST(RecordingMeta, aScopeWithoutExactlyOneCaseFails) {
  const std::string message = "Invalid number of keys found, expected one.";
  EXPECT_THAT(failureOf(R"({"scope":{}})"), HasSubstr(message));
  EXPECT_THAT(failureOf(R"({"scope":{"screen":{"_0":7}}})"), HasSubstr(message));
  EXPECT_THAT(failureOf(R"({"scope":{"display":null}})"), HasSubstr(message));
  EXPECT_THAT(failureOf(R"({"scope":{"display":{"_0":7},"window":{"_0":8}}})"), HasSubstr(message));
}

class DamagedMeta : public testing::TestWithParam<const char*> {};

TEST_P(DamagedMeta, failsWithAMessageThatNamesTheFile) {
  const auto meta = decode(GetParam());
  ASSERT_FALSE(meta);
  EXPECT_EQ(meta.error().kind, PackageError::Kind::malformed);
  EXPECT_THAT(meta.error().message, testing::StartsWith("录制索引“meta.json”已损坏："));
}

INSTANTIATE_TEST_SUITE_P(
    RecordingMeta, DamagedMeta,
    testing::Values("", "{", "[]", "7", "null", "{} {}", R"({"version":"1"})", R"({"version":1.5})",
                    R"({"version":true})", R"({"version":1e300})",
                    R"({"version":9223372036854775808})", R"({"createdAt":"yesterday"})",
                    R"({"createdAt":1795167667})", R"({"source":"screen"})", R"({"source":1})",
                    R"({"displayID":-1})", R"({"displayID":4294967296})", R"({"captureWidth":"0"})",
                    R"({"scaleFactor":"2"})", R"({"scaleFactor":true})", R"({"scaleFactor":1e999})",
                    R"({"duration":[]})", R"({"interrupted":0})", R"({"interrupted":"true"})",
                    R"({"interruptReason":7})", R"({"cameraMode":"放"})", R"({"scope":"display"})",
                    R"({"scope":{"display":7}})", R"({"scope":{"display":{}}})",
                    R"({"scope":{"display":{"_0":null}}})", R"({"scope":{"window":{"_0":-1}}})",
                    R"({"scope":{"region":{"displayID":7}}})",
                    R"({"scope":{"region":{"displayID":7,"rect":[1,2,3,4]}}})",
                    R"({"scope":{"region":{"displayID":7,"rect":[[1,2],[3]]}}})",
                    R"({"scope":{"region":{"rect":[[1,2],[3,4]]}}})", "{\"source\":\"\xFF\"}"));

TEST(RecordingMeta, aSizeOrRateThatNoPictureHasFails) {
  for (const char* field :
       {R"({"captureWidth":32769})", R"({"captureWidth":-1})", R"({"captureHeight":1e9})",
        R"({"captureHeight":-1})", R"({"fps":0})", R"({"fps":1001})"}) {
    const auto meta = decode(field);
    ASSERT_FALSE(meta) << field;
    EXPECT_EQ(meta.error().kind, PackageError::Kind::outOfRange);
  }
  EXPECT_EQ(failureOf(R"({"fps":1001})"),
            "录制索引“meta.json”无法使用：字段“fps”的值 1001 不在 1 到 1000 之间。");
}

TEST(RecordingMeta, sizesAndRatesAtTheirLimitsAreTaken) {
  EXPECT_TRUE(decode(R"({"captureWidth":0,"captureHeight":0,"fps":1})"));
  EXPECT_TRUE(decode(R"({"captureWidth":32768,"captureHeight":32768,"fps":1000})"));
}

TEST(RecordingMeta, nullCountsAsAbsentAndUnknownKeysAreIgnored) {
  const auto meta = decode(R"({"fps":null,"duration":null,"createdAt":null,"later":{"a":[1]}})");
  ASSERT_TRUE(meta);
  EXPECT_EQ(meta->fps, 60);
  EXPECT_EQ(meta->duration, std::nullopt);
  EXPECT_EQ(meta->createdAt, now);
}

TEST(RecordingMeta, aWholeDecimalIsAnInteger) {
  EXPECT_EQ(decode(R"({"fps":60.0})")->fps, 60);
  EXPECT_EQ(decode(R"({"fps":6e1})")->fps, 60);
  EXPECT_EQ(decode(R"({"scaleFactor":1})")->scaleFactor, 1.0);
}

TEST(RecordingMeta, nestingBeyondAllSenseIsNoCrash) {
  constexpr std::size_t depth = 1000000;
  EXPECT_FALSE(decode(std::string(depth, '[')));
  EXPECT_TRUE(decode(R"({"later":)" + std::string(depth, '[') + std::string(depth, ']') + "}"));
}

}  // namespace
}  // namespace vesk::package
