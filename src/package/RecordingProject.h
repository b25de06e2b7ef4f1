#pragma once

#include <expected>
#include <filesystem>
#include <optional>
#include <vector>

#include "package/PackageError.h"
#include "package/RecordedEvent.h"
#include "package/RecordingMeta.h"

namespace vesk::package {

/// A package loaded into memory; it never changes afterwards and holds no open files.
struct RecordingProject {
  std::filesystem::path url;  ///< the package directory
  RecordingMeta meta;
  std::vector<RecordedEvent> events;  ///< stably sorted by time
  std::vector<RecordedEvent> moves;
  std::vector<RecordedEvent> clicks;
  std::vector<RecordedEvent> keys;
  std::vector<RecordedEvent> appChanges;
  std::vector<RecordedEvent> gaps;

  /// Reads "meta.json" and "events.jsonl" whole, as far as packageFile lets it. Bad lines of the
  /// log are dropped with one entry in the system log; every other failure is returned.
  /// @param now see decodeRecordingMeta.
  static std::expected<RecordingProject, PackageError> load(const std::filesystem::path& url,
                                                            Timestamp now);

  /// A project from values, with the events sorted and the views derived.
  static RecordingProject make(std::filesystem::path url, RecordingMeta meta,
                               std::vector<RecordedEvent> events);

  /// The paths of the media files; camera and microphone only if there is such a file now that
  /// packageFile does not refuse.
  std::filesystem::path screenURL() const;
  std::optional<std::filesystem::path> cameraURL() const;
  std::optional<std::filesystem::path> micURL() const;

  /// The effective duration in seconds: the index's, else the time of the last event, else 0.
  double duration() const;
};

/// A package's path as it ends with the package's name: a completing shell, and a URI of a
/// directory, put a slash behind it.
std::filesystem::path withoutTrailingSlash(const std::filesystem::path& url);

/// The package directories directly in `root`, newest name first; empty when it cannot be listed.
std::vector<std::filesystem::path> listPackages(const std::filesystem::path& root);

}  // namespace vesk::package
