#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>

namespace vesk::package {

/// How many lines of an event log speak of a click, and how many others of a camera mark.
struct EventCounts {
  std::int64_t clicks = 0;
  std::int64_t marks = 0;
  bool operator==(const EventCounts&) const = default;
};

/// Counts by a plain search of the text, for lists that show many logs: a line with "click" in
/// double quotes is a click, else one with "zoomIn" or "zoomOut" in double quotes is a mark. Lines
/// are not decoded, so another value with such a text counts as well. The file is read in pieces of
/// a fixed size. Nothing comes of a file that cannot be read, is no UTF-8 text or has more than
/// 2 GiB; a character that the very end of the file cuts through is no failure.
/// @param file a regular file.
std::optional<EventCounts> countEvents(const std::filesystem::path& file);

}  // namespace vesk::package
