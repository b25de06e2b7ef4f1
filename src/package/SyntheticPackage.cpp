#include "package/SyntheticPackage.h"

#include <fmt/format.h>

#include <cmath>
#include <string>
#include <system_error>

#include "package/DurableWrite.h"
#include "package/FileText.h"

namespace vesk::package {

namespace {

/// Milliseconds as whole digits; a format of the double itself, because a duration may be beyond
/// every integer.
std::string packageName(std::size_t markCount, double duration) {
  return fmt::format("tqzn-test-{}-{:.0f}.recording", markCount, std::trunc(duration * 1000));
}

RecordingMeta metaOf(double duration, Timestamp now) {
  RecordingMeta meta;
  meta.createdAt = now;
  meta.displayID = 1;
  meta.captureWidth = 1920;
  meta.captureHeight = 1080;
  meta.duration = duration;
  return meta;
}

std::string linesOf(std::span<const SyntheticMark> marks) {
  std::string text;
  for (const auto& mark : marks) {
    RecordedEvent event;
    event.t = mark.t;
    event.type = mark.kind;
    event.x = mark.x;
    event.y = mark.y;
    text += encodeRecordedEvent(event);
    text += '\n';
  }
  return text;
}

/// An empty directory at the path, in place of whatever stood there.
bool makeEmptyDirectory(const std::filesystem::path& path) {
  std::error_code error;
  std::filesystem::remove_all(path, error);
  std::filesystem::create_directories(path, error);
  return !error;
}

}  // namespace

std::optional<std::filesystem::path> makeSyntheticPackage(std::span<const SyntheticMark> marks,
                                                          double duration, Timestamp now) {
  std::error_code error;
  const auto temporary = std::filesystem::temp_directory_path(error);
  if (error) return std::nullopt;
  auto package = temporary / packageName(marks.size(), duration);
  if (!makeEmptyDirectory(package)) return std::nullopt;
  const auto meta = encodeRecordingMeta(metaOf(duration, now), JsonLayout::compact);
  if (!writeFile(package / "meta.json", meta) ||
      !writeFileAtomically(package / "events.jsonl", linesOf(marks)) ||
      !writeFile(package / "screen.mov", "")) {
    return std::nullopt;
  }
  return package;
}

}  // namespace vesk::package
