#pragma once

#include <expected>
#include <filesystem>
#include <string_view>

#include "package/FileSystemCalls.h"
#include "package/PackageError.h"

namespace vesk::capture {

/// The open file of an input log, which nobody but its user may read. To be used by one thread at a
/// time.
class EventLogFile {
 public:
  /// Makes an empty file; one of that name is overwritten.
  /// @param calls must outlive the file.
  static std::expected<EventLogFile, package::PackageError> create(
      std::filesystem::path path, package::FileSystemCalls& calls = package::systemCalls());

  EventLogFile(EventLogFile&& other) noexcept;
  EventLogFile& operator=(EventLogFile&&) = delete;
  EventLogFile(const EventLogFile&) = delete;
  EventLogFile& operator=(const EventLogFile&) = delete;
  ~EventLogFile();

  /// Adds whole lines. After a failure a part of them may stand in the file; a line that was cut
  /// costs no line of the next call.
  std::expected<void, package::PackageError> append(std::string_view lines);

 private:
  EventLogFile(std::filesystem::path path, int descriptor, package::FileSystemCalls& calls);
  bool write(std::string_view text);

  std::filesystem::path path_;
  int descriptor_;
  package::FileSystemCalls* calls_;
  bool endsInLine_ = true;
};

}  // namespace vesk::capture
