#include "package/RecordingItem.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>

#include "package/DirectorySize.h"
#include "package/EventCounts.h"
#include "package/FileLimits.h"
#include "package/PackageFile.h"

namespace vesk::package {

namespace {

EventCounts countsOf(const std::filesystem::path& package) {
  const auto log = packageFile(package, "events.jsonl");
  if (!log || !*log) return {};
  return countEvents(**log).value_or(EventCounts{});
}

}  // namespace

std::string RecordingItem::durationLabel() const {
  // An index may claim any number; beyond this one a double no longer counts seconds.
  constexpr double longest = 1e15;
  const double seconds = std::isfinite(duration) ? std::clamp(duration, -longest, longest) : 0;
  const auto whole = static_cast<std::int64_t>(seconds);
  if (whole < 60) return fmt::format("{:.1f}s", seconds);
  return fmt::format("{}:{:02}", whole / 60, whole % 60);
}

std::optional<RecordingItem> scanRecording(const std::filesystem::path& package, Timestamp now) {
  const auto text = readPackageFile(package, "meta.json", largestMetaFile);
  if (!text) return std::nullopt;
  const auto meta = decodeRecordingMeta(*text, now);
  if (!meta) return std::nullopt;

  const auto counts = countsOf(package);
  return RecordingItem{
      .url = package,
      .createdAt = meta->createdAt,
      .duration = meta->duration.value_or(0),
      .pixelSize = {static_cast<double>(meta->captureWidth),
                    static_cast<double>(meta->captureHeight)},
      .fps = meta->fps,
      .cameraMode = meta->cameraMode,
      .clickCount = counts.clicks,
      .markCount = counts.marks,
      .bytes = allocatedSize(package),
      .interrupted = meta->interrupted,
      .hasMic = meta->hasMicrophone,
      .hasSystemAudio = meta->hasSystemAudio,
  };
}

}  // namespace vesk::package
