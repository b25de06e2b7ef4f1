#pragma once

#include <chrono>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>
#include <string_view>

#include "package/CaptureScope.h"
#include "package/PackageError.h"
#include "package/StyleSettings.h"

namespace vesk::package {

/// Wall-clock instants of the package files have whole seconds, as ISO 8601 writes them there.
using Timestamp = std::chrono::sys_seconds;

/// The index of a package, the file "meta.json". Times are seconds; the …PTS fields are
/// presentation times on the clock that stamps every stream of the take.
struct RecordingMeta {
  enum class Source { display, window, region };

  std::int64_t version = 1;
  Timestamp createdAt{};
  Source source = Source::display;
  std::uint32_t displayID = 0;
  std::int64_t captureWidth = 0;   ///< pixels, 0…32768
  std::int64_t captureHeight = 0;  ///< pixels, 0…32768
  std::int64_t fps = 60;           ///< 1…1000
  double scaleFactor = 2.0;        ///< pixels per point
  std::optional<double> firstFramePTS;
  std::optional<double> duration;
  bool interrupted = false;
  std::optional<std::string> interruptReason;
  std::int64_t droppedFrames = 0;
  bool cursorSeparated = true;
  bool hasSystemAudio = false;
  bool hasMicrophone = false;
  bool hasCamera = false;
  std::optional<double> cameraFirstFramePTS;
  std::optional<double> cameraFirstLitPTS;
  std::optional<double> micFirstSamplePTS;
  CameraMode cameraMode = CameraMode::zoom;
  CaptureScope scope;
  bool operator==(const RecordingMeta&) const = default;
};

std::string_view rawValue(RecordingMeta::Source source);

/// Reads an index. Absent and null keys take their defaults, unknown keys are ignored; a value of
/// the wrong type, an enumeration string without a case, a size outside 0…32768 or a frame rate
/// outside 1…1000 fails the whole decode.
/// @param now stands in for an absent `createdAt`.
std::expected<RecordingMeta, PackageError> decodeRecordingMeta(std::string_view json,
                                                               Timestamp now);

/// JSON layouts of an index.
enum class JsonLayout { pretty, compact };

/// UTF-8 JSON with sorted keys and ISO 8601 dates; optional fields only when they have a value.
std::string encodeRecordingMeta(const RecordingMeta& meta, JsonLayout layout = JsonLayout::pretty);

}  // namespace vesk::package
