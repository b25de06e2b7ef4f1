#include "package/RecordingMeta.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <nlohmann/json.hpp>
#include <utility>

#include "package/CalendarTime.h"
#include "package/CaptureScopeCoding.h"
#include "package/JsonFields.h"

namespace vesk::package {

namespace {

constexpr std::int64_t largestSize = 32768;
constexpr std::int64_t largestFrameRate = 1000;

std::optional<RecordingMeta::Source> recordingSource(std::string_view raw) {
  using enum RecordingMeta::Source;
  constexpr std::array sources{display, window, region};
  const auto* found = std::ranges::find(
      sources, raw, [](RecordingMeta::Source source) { return rawValue(source); });
  if (found == sources.end()) return std::nullopt;
  return *found;
}

std::unexpected<PackageError> malformedMeta(std::string_view cause) {
  return std::unexpected(PackageError{PackageError::Kind::malformed,
                                      fmt::format("录制索引“meta.json”已损坏：{}。", cause)});
}

std::optional<PackageError> rangeError(std::string_view key, std::int64_t value,
                                       std::int64_t smallest, std::int64_t largest) {
  if (value >= smallest && value <= largest) return std::nullopt;
  return PackageError{
      PackageError::Kind::outOfRange,
      fmt::format("录制索引“meta.json”无法使用：字段“{}”的值 {} 不在 {} 到 {} 之间。", key, value,
                  smallest, largest)};
}

/// The first field whose value no picture can have.
std::optional<PackageError> firstRangeError(const RecordingMeta& meta) {
  if (auto error = rangeError("captureWidth", meta.captureWidth, 0, largestSize)) return error;
  if (auto error = rangeError("captureHeight", meta.captureHeight, 0, largestSize)) return error;
  return rangeError("fps", meta.fps, 1, largestFrameRate);
}

void readScope(JsonFields& fields, RecordingMeta& meta) {
  meta.scope.value = CaptureScope::Display{meta.displayID};
  const auto* json = fields.find("scope");
  if (json == nullptr) return;
  if (auto scope = decodeCaptureScope(*json)) {
    meta.scope = *scope;
  } else {
    fields.fail(fmt::format("字段“scope”的类型不符：{}", scope.error()));
  }
}

}  // namespace

std::string_view rawValue(RecordingMeta::Source source) {
  switch (source) {
    case RecordingMeta::Source::display:
      return "display";
    case RecordingMeta::Source::window:
      return "window";
    case RecordingMeta::Source::region:
      return "region";
  }
  std::unreachable();
}

std::expected<RecordingMeta, PackageError> decodeRecordingMeta(std::string_view json,
                                                               Timestamp now) {
  const auto document = nlohmann::json::parse(json, nullptr, /*allow_exceptions=*/false);
  if (document.is_discarded()) return malformedMeta("内容不是有效的 JSON");

  RecordingMeta meta;
  meta.createdAt = now;
  JsonFields fields(document);
  fields.read("version", meta.version);
  fields.read("createdAt", meta.createdAt, "ISO 8601 日期", instantFromISO8601);
  fields.read("source", meta.source, "display、window 或 region", recordingSource);
  fields.read("displayID", meta.displayID);
  fields.read("captureWidth", meta.captureWidth);
  fields.read("captureHeight", meta.captureHeight);
  fields.read("fps", meta.fps);
  fields.read("scaleFactor", meta.scaleFactor);
  fields.read("firstFramePTS", meta.firstFramePTS);
  fields.read("duration", meta.duration);
  fields.read("interrupted", meta.interrupted);
  fields.read("interruptReason", meta.interruptReason);
  fields.read("droppedFrames", meta.droppedFrames);
  fields.read("cursorSeparated", meta.cursorSeparated);
  fields.read("hasSystemAudio", meta.hasSystemAudio);
  fields.read("hasMicrophone", meta.hasMicrophone);
  fields.read("hasCamera", meta.hasCamera);
  fields.read("cameraFirstFramePTS", meta.cameraFirstFramePTS);
  fields.read("cameraFirstLitPTS", meta.cameraFirstLitPTS);
  fields.read("micFirstSamplePTS", meta.micFirstSamplePTS);
  fields.read("cameraMode", meta.cameraMode, "放大 或 3D 透视",
              [](std::string_view raw) { return cameraMode(raw); });
  readScope(fields, meta);

  if (fields.failure()) return malformedMeta(*fields.failure());
  if (auto error = firstRangeError(meta)) return std::unexpected(*std::move(error));
  return meta;
}

std::string encodeRecordingMeta(const RecordingMeta& meta, JsonLayout layout) {
  nlohmann::json json{
      {"version", meta.version},
      {"createdAt", iso8601(meta.createdAt)},
      {"source", rawValue(meta.source)},
      {"displayID", meta.displayID},
      {"captureWidth", meta.captureWidth},
      {"captureHeight", meta.captureHeight},
      {"fps", meta.fps},
      {"scaleFactor", meta.scaleFactor},
      {"interrupted", meta.interrupted},
      {"droppedFrames", meta.droppedFrames},
      {"cursorSeparated", meta.cursorSeparated},
      {"hasSystemAudio", meta.hasSystemAudio},
      {"hasMicrophone", meta.hasMicrophone},
      {"hasCamera", meta.hasCamera},
      {"cameraMode", rawValue(meta.cameraMode)},
      {"scope", encodeCaptureScope(meta.scope)},
  };
  putIfPresent(json, "firstFramePTS", meta.firstFramePTS);
  putIfPresent(json, "duration", meta.duration);
  putIfPresent(json, "interruptReason", meta.interruptReason);
  putIfPresent(json, "cameraFirstFramePTS", meta.cameraFirstFramePTS);
  putIfPresent(json, "cameraFirstLitPTS", meta.cameraFirstLitPTS);
  putIfPresent(json, "micFirstSamplePTS", meta.micFirstSamplePTS);

  constexpr int compactIndent = -1;
  constexpr int prettyIndent = 2;
  return json.dump(layout == JsonLayout::pretty ? prettyIndent : compactIndent, ' ',
                   /*ensure_ascii=*/false, nlohmann::json::error_handler_t::replace);
}

}  // namespace vesk::package
